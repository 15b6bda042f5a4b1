#include <tests/viewer/ColladaText.h>
#include <tests/viewer/ViewerTest.h>

#include <viewer/UnitRotations.h>
#include <viewer/ViewerError.h>

#include <agent/GeometryComponent.h>
#include <dynamics/DynamicsBody.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>
#include <xml_parser/XMLNode.h>

#include <gmtl/Generate.h>
#include <osg/Math>
#include <osg/Vec3d>

#include <list>
#include <random>

namespace tessarin::viewer {
namespace {

std::string stateOf(Scene& scene) {
    std::ostringstream text;
    scene.getRoot().createXml(text);
    return text.str();
}

/// Classes, names and fields, in order.
std::vector<std::string> componentsOf(AgentNode& agent) {
    std::vector<std::string> described;
    agent.visitComponents([&](agent::Component* component) {
        described.push_back(std::string(component->getClassName()) + " " + component->getName());
        std::list<std::string> fields;
        component->getFieldNames(fields);
        for (const std::string& field : fields)
            described.push_back(field + "=" + component->getAsString(field));
    });
    return described;
}

/// How many agents of a branch show something.
int countShown(AgentNode& agent) {
    int shown = 0;
    agent.visitComponents([&](agent::Component* component) {
        shown += component->getOsgNode() && component->getOsgNode()->getBound().valid() ? 1 : 0;
    });
    for (AgentNode* child : agent.getChildren())
        shown += countShown(*child);
    return shown;
}

/// Same names, classes, fields and order, and the same transforms to six digits, whatever the sign of a quaternion.
void expectEqual(AgentNode& a, AgentNode& b) {
    SCOPED_TRACE(a.getName());
    EXPECT_EQ(a.getName(), b.getName());
    EXPECT_EQ(componentsOf(a), componentsOf(b));
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(a.getPosition()[i], b.getPosition()[i], 1e-5 * std::max(1.0, std::abs(a.getPosition()[i])));
    double cosine = 0;
    for (int i = 0; i < 4; ++i)
        cosine += a.getRotation()[i] * b.getRotation()[i];
    EXPECT_NEAR(std::abs(cosine), 1, 1e-5);
    ASSERT_EQ(a.getChildren().size(), b.getChildren().size());
    auto other = b.getChildren().begin();
    for (AgentNode* child : a.getChildren())
        expectEqual(*child, **other++);
}

class SceneTest : public ViewerTest {
protected:
    /// A document written and read again, from another folder, is the same agents.
    void expectRoundTrip(Scene& scene) {
        const std::filesystem::path file = write("deep/again.xml", "");
        scene.write(file);
        Scene again(file);
        expectEqual(scene.getRoot(), again.getRoot());
        EXPECT_EQ(countShown(again.getRoot()), countShown(scene.getRoot()));
    }
};

TEST_F(SceneTest, TheTowerStandsUntilItIsHitAndThenComesToRest) {
    Scene scene(scenes / "tower.xml");
    EXPECT_EQ(countShown(scene.getRoot()), int(scene.getRoot().getChildren().size()));
    const auto highest = [&] {
        double height = 0;
        for (AgentNode* child : scene.getRoot().getChildren())
            height = std::max(height, child->getPosition()[2]);
        return height;
    };
    const double standing = highest();
    EXPECT_GT(standing, 2);
    scene.apply(write("nothing.xml", "<AgentNode><AgentNode name='ball'><Transform><Translate>-20 0 0.4</Translate>"
                                     "<Rotate>0 0 0 1</Rotate></Transform><Component class='RigidBodyComponent' "
                                     "name='RigidBodyComponent'/></AgentNode></AgentNode>"));
    runFrames(scene, 60);
    EXPECT_NEAR(highest(), standing, 0.02);

    scene.reload();
    runFrames(scene, 300);
    EXPECT_LT(highest(), 0.6 * standing);
    expectRoundTrip(scene);
}

TEST_F(SceneTest, TheTruckStaysOnItsWheels) {
    for (const char* name : {"truck.xml", "models/truck.dae"}) {
        Scene scene(scenes / name);
        runFrames(scene, 300);
        AgentNode& root = scene.getRoot();
        ASSERT_NE(root.getChild("truck"), nullptr);
        const gmtl::Vec<double, 3> place = root.getChild("truck")->getPosition();
        EXPECT_NEAR(place[0], 0, 0.2);
        EXPECT_NEAR(place[2], 0.74, 0.01) << "wheels of 0.42, and axles 0.32 below the middle of the body";
        for (const char* wheel : {"wheel_front_left", "wheel_front_right", "wheel_rear_left", "wheel_rear_right"})
            EXPECT_NEAR(root.getChild(wheel)->getPosition()[2], 0.42, 0.01) << wheel;
        EXPECT_EQ(countShown(root), 17);
        expectRoundTrip(scene);
    }
}

TEST_F(SceneTest, TheCarouselMovesByTransformsAlone) {
    Scene scene(scenes / "carousel.xml", {write("patch.xml", "<AgentNode><AgentNode name='cup_1_1'><Transform>"
                                                             "<Translate>1 2 3</Translate><Rotate>0 0 1 0</Rotate>"
                                                             "</Transform><Component class='GeometryComponent'/>"
                                                             "</AgentNode></AgentNode>")});
    AgentNode* const patched = scene.getRoot().getChild("cup_1_1");
    ASSERT_NE(patched, nullptr);
    EXPECT_EQ(patched->getPosition()[2], 3) << "a new agent of a patch gets its place and geometry";
    EXPECT_EQ(countShown(*patched), 1);

    EXPECT_TRUE(scene.getRoot().getDynamicsBodies().empty());
    EXPECT_EQ(countShown(scene.getRoot()), 17);
    AgentNode* const cup = scene.getRoot().getChild("platform")->getChild("turntable_2")->getChild("cup_2_3");
    const gmtl::Vec<double, 3> local = cup->getPosition(), before = cup->getWorldPosition();
    EXPECT_NEAR(before[2], 0.38, 1e-6);
    runFrames(scene, 60);
    const gmtl::Vec<double, 3> after = cup->getWorldPosition();
    EXPECT_EQ(cup->getPosition()[0], local[0]);
    EXPECT_GT(std::hypot(after[0] - before[0], after[1] - before[1]), 0.1);
    EXPECT_NEAR(after[2], before[2], 1e-6);
    expectRoundTrip(scene);
}

TEST_F(SceneTest, AgentsStandWhereTheirBodiesAreBeforeTheFirstFrame) {
    Scene scene(scenes / "models" / "tower.dae");
    EXPECT_NEAR(scene.getRoot().getChild("ball")->getPosition()[0], -2.9, 1e-6);
    EXPECT_NEAR(scene.getRoot().getChild("ground")->getPosition()[2], -0.25, 1e-6);
    expectRoundTrip(scene);
}

TEST_F(SceneTest, AModelThatCannotBeReadIsNoFaultOfTheNextDocument) {
    Scene scene(write("a.xml", "<AgentNode name='a'><AgentNode name='b'/></AgentNode>"));
    const auto apply = [&](const std::string& inside) {
        scene.apply(write("patch.xml", "<AgentNode><AgentNode name='b'><Transform><Translate>7 0 0</Translate><Rotate>"
                                       "0 0 0 1</Rotate></Transform>" +
                                           inside + "</AgentNode></AgentNode>"));
    };
    write("plain.foo", "hello");
    const std::string bad =
        "<Component class='VisualModelComponent'><field name='filePath' value='plain.foo'/></Component>";
    EXPECT_THROW(apply(bad), ViewerError);
    EXPECT_NO_THROW(apply("<AgentNode name='c'><Transform><Translate>1 2 3</Translate><Rotate>0 0 0 1</Rotate>"
                          "</Transform></AgentNode>"));
    EXPECT_EQ(scene.getRoot().getChild("b")->getChild("c")->getPosition()[2], 3);
    EXPECT_THROW(apply(bad), ViewerError);
}

TEST_F(SceneTest, DocumentsNameModelsFromTheirOwnFolder) {
    std::filesystem::copy(scenes / "models" / "carousel.dae", folder / "carousel.dae");
    Scene scene(write("here.xml",
                      "<AgentNode name='here'><Component class='VisualModelComponent'><field name='filePath' "
                      "value='carousel.dae'/></Component><Component class='GeometryComponent'/></AgentNode>"));
    EXPECT_EQ(countShown(scene.getRoot()), 1);
    for (const auto& [name, path] : {std::pair<const char*, std::filesystem::path>("beside.xml", "carousel.dae"),
                                     {"deep/below.xml", folder / "carousel.dae"}}) {
        const std::filesystem::path file = write(name, "");
        scene.write(file);
        EXPECT_THAT(textOf(file), testing::HasSubstr("value=\"" + path.string() + "\""));
    }
}

gmtl::Quat<double> randomRotation(std::mt19937& random) {
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> any(0, osg::PI), hard(osg::PI / 2, 2 * osg::PI / 3);
    osg::Vec3d axis(normal(random), normal(random), normal(random));
    axis.normalize();
    const double angle = random() % 2 == 0 ? any(random) : hard(random);
    return {axis.x() * std::sin(angle / 2), axis.y() * std::sin(angle / 2), axis.z() * std::sin(angle / 2),
            std::cos(angle / 2)};
}

/// The elements of a rotation that is off by less than the tolerance; matrices are told apart by their rows.
void expectRotation(AgentNode& agent, const gmtl::Quat<double>& expected, double tolerance) {
    gmtl::Matrix<double, 4, 4> matrix;
    gmtl::set(matrix, expected);
    for (unsigned row = 0; row < 3; ++row)
        for (unsigned column = 0; column < 3; ++column)
            ASSERT_NEAR(agent.getMatrix()(row, column), matrix(row, column), tolerance) << agent.getName();
}

TEST_F(SceneTest, RotationsStayThroughAHundredSaves) {
    std::mt19937 random(7);
    std::string nodes, bodies, instances;
    for (int i = 0; i < 6; ++i) {
        const std::string name = "body" + std::to_string(i);
        nodes += "<node id='" + name + "' name='" + name + "'/>";
        bodies += bodyText(name, "<shape><box><half_extents>1 1 1</half_extents></box></shape>");
        instances += instanceText(name, name);
    }
    write("bodies.dae", colladaText("Z_UP", nodes, bodies, instances));
    const std::filesystem::path file = write(
        "scene.xml", "<AgentNode name='scene'><Component class='VisualModelComponent' name='VisualModelComponent'>"
                     "<field name='filePath' value='bodies.dae'/></Component></AgentNode>");
    std::vector<gmtl::Quat<double>> rotations;
    {
        Scene scene(file);
        for (int i = 0; i < 120; ++i) {
            const bool hasBody = i < 6;
            AgentNode& agent = *scene.getRoot().getOrAddChild((hasBody ? "body" : "agent") + std::to_string(i));
            rotations.push_back(randomRotation(random));
            ASSERT_EQ(agent.getRigidBody() && agent.getRigidBody()->getBody(), hasBody);
            if (hasBody)
                agent.getRigidBody()->getBody()->setRotation(rotations.back());
            agent.setRotation(rotations.back());
        }
        scene.write(file);
    }
    for (int save = 0; save < 100; ++save) {
        Scene scene(file);
        scene.write(file);
    }
    Scene scene(file);
    auto rotation = rotations.begin();
    for (int i = 0; i < 120; ++i)
        expectRotation(*scene.getRoot().getChild((i < 6 ? "body" : "agent") + std::to_string(i)), *rotation++, 1e-5);
}

TEST(UnitRotations, AreMadeOfThoseThatOnlyRoundingKeepsFromIt) {
    const std::pair<const char*, const char*> rows[] = {
        {"0 0 0 1", nullptr},
        {"0 0 0.6 0.9", nullptr}, // a scaled matrix
        {"0 0 0 1.01", nullptr},
        {"0 0 0 0", nullptr},
        {"0 0 0 nan", nullptr},
        {"0\t0 0 0.999999", nullptr}, // unreadable to agents too
        {"0 0 0.999999", nullptr},
        {"0 0 0.7071x 0.7071", nullptr},
        {"0.6-0.8 0 0", nullptr},
        {"  0 0  0 1.000001 ", "0 0 0 1"},
        {"0 0 0 0.999999 7 x", "0 0 0 1"}, // what follows is ignored anyway
        {"-0.999999 0 0 0", "-1 0 0 0"},
        {"0 0 0 9.99999e-1", "0 0 0 1"},
        {"0.707107 0 0 0.707107", "0.7071067811865475 0 0 0.7071067811865475"},
        {"0 0.707 0.707 0", "0 0.7071067811865476 0.7071067811865476 0"}};
    for (const auto& [text, expected] : rows) {
        xml_parser::XMLNode root("AgentNode", nullptr);
        xml_parser::XMLNode* const child = root.addChild("AgentNode");
        child->addChild("Transform")->addChild("Translate")->text = text;
        child->getChild(0)->addChild("Rotate")->text = text;
        makeRotationsUnit(root);
        EXPECT_EQ(child->getChild(0)->getChild(0)->text, text);
        EXPECT_EQ(child->getChild(0)->getChild(1)->text, expected ? expected : text);
    }
}

TEST_F(SceneTest, AReloadBeginsAnewAndAFailedOneChangesNothing) {
    const std::string document = textOf(scenes / "tower.xml");
    const std::filesystem::path file = write("tower.xml", document);
    write("models/tower.dae", textOf(scenes / "models" / "tower.dae"));
    Scene scene(file);
    const std::string start = stateOf(scene);
    runFrames(scene, 30);
    const std::string later = stateOf(scene);
    EXPECT_TRUE(later != start);

    write("tower.xml", "<AgentNode><Component");
    EXPECT_THROW(scene.reload(), ViewerError);
    EXPECT_TRUE(stateOf(scene) == later);
    EXPECT_EQ(AgentNode::dynamicsWorld, &scene.getWorld());
    runFrames(scene, 1);
    EXPECT_TRUE(stateOf(scene) != later);

    write("tower.xml", document);
    scene.reload();
    EXPECT_TRUE(stateOf(scene) == start);
    EXPECT_EQ(scene.getGraph().getNumChildren(), 1U);
    runFrames(scene, 30);
    EXPECT_TRUE(stateOf(scene) == later);
}

} // namespace
} // namespace tessarin::viewer
