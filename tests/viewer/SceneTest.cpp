#include <tests/viewer/ViewerTest.h>

#include <viewer/FrameLoop.h>
#include <viewer/Scene.h>
#include <viewer/ViewerError.h>

#include <agent/AgentNode.h>
#include <agent/GeometryComponent.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <algorithm>
#include <cmath>
#include <list>
#include <sstream>

namespace tessarin::viewer {

namespace {

std::string textOf(Scene& scene) {
    std::ostringstream text;
    scene.getRoot().createXml(text);
    return text.str();
}

void runFrames(Scene& scene, int frames) {
    FrameLoop loop(scene);
    for (int frame = 0; frame < frames; ++frame)
        loop.frame(1.0 / 60);
}

/// Classes, names and fields, in order.
std::vector<std::string> componentsOf(agent::AgentNode& agent) {
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
int countShown(agent::AgentNode& agent) {
    int shown = 0;
    agent.visitComponents([&](agent::Component* component) {
        shown += component->getOsgNode() && component->getOsgNode()->getBound().valid() ? 1 : 0;
    });
    for (agent::AgentNode* child : agent.getChildren())
        shown += countShown(*child);
    return shown;
}

/// Same names, classes, fields and order, and the same transforms to six digits, whatever the sign of a quaternion.
void expectEqual(agent::AgentNode& a, agent::AgentNode& b) {
    SCOPED_TRACE(a.getName());
    EXPECT_EQ(a.getName(), b.getName());
    EXPECT_EQ(componentsOf(a), componentsOf(b));
    const gmtl::Vec<double, 3> place[2] = {a.getPosition(), b.getPosition()};
    const gmtl::Quat<double> turn[2] = {a.getRotation(), b.getRotation()};
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(place[0][i], place[1][i], 1e-5 * std::max(1.0, std::abs(place[0][i])));
    double cosine = 0;
    for (int i = 0; i < 4; ++i)
        cosine += turn[0][i] * turn[1][i];
    EXPECT_NEAR(std::abs(cosine), 1, 1e-5);
    ASSERT_EQ(a.getChildren().size(), b.getChildren().size());
    auto other = b.getChildren().begin();
    for (agent::AgentNode* child : a.getChildren())
        expectEqual(*child, **other++);
}

class SceneTest : public ViewerTest {
protected:
    /// A document written and read again, from another folder, is the same agents.
    void expectRoundTrip(Scene& scene, const std::string& name) {
        const std::filesystem::path file = folder / "deep" / name;
        std::filesystem::create_directories(file.parent_path());
        scene.write(file);
        Scene again(file);
        expectEqual(scene.getRoot(), again.getRoot());
        EXPECT_EQ(countShown(again.getRoot()), countShown(scene.getRoot())) << name;
    }
};

TEST_F(SceneTest, TheTowerStandsUntilItIsHitAndThenComesToRest) {
    Scene scene(scenes / "tower.xml");
    const int bricks = int(scene.getRoot().getChildren().size()) - 3;
    EXPECT_EQ(countShown(scene.getRoot()), bricks + 3);
    const auto highest = [&] {
        double height = 0;
        for (agent::AgentNode* child : scene.getRoot().getChildren())
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
    expectRoundTrip(scene, "tower.xml");
}

TEST_F(SceneTest, TheTruckStaysOnItsWheels) {
    for (const char* name : {"truck.xml", "models/truck.dae"}) {
        Scene scene(scenes / name);
        runFrames(scene, 300);
        agent::AgentNode* const truck = scene.getRoot().getChild("truck");
        ASSERT_NE(truck, nullptr);
        const gmtl::Vec<double, 3> place = truck->getPosition();
        EXPECT_NEAR(place[0], 0, 0.2);
        EXPECT_NEAR(place[2], 0.74, 0.01) << "wheels of 0.42, and axles 0.32 below the middle of the body";
        for (const char* wheel : {"wheel_front_left", "wheel_front_right", "wheel_rear_left", "wheel_rear_right"})
            EXPECT_NEAR(scene.getRoot().getChild(wheel)->getPosition()[2], 0.42, 0.01) << wheel;
        EXPECT_EQ(countShown(scene.getRoot()), 17);
        expectRoundTrip(scene, "truck.xml");
    }
}

TEST_F(SceneTest, TheCarouselMovesByTransformsAlone) {
    Scene scene(scenes / "carousel.xml");
    EXPECT_TRUE(scene.getRoot().getDynamicsBodies().empty());
    EXPECT_EQ(countShown(scene.getRoot()), 16);
    agent::AgentNode* const cup = scene.getRoot().getChild("platform")->getChild("turntable_2")->getChild("cup_2_3");
    ASSERT_NE(cup, nullptr);
    const gmtl::Vec<double, 3> local = cup->getPosition();
    const gmtl::Vec<double, 3> before = cup->getWorldPosition();
    EXPECT_NEAR(before[2], 0.38, 1e-6);
    runFrames(scene, 60);
    const gmtl::Vec<double, 3> after = cup->getWorldPosition();
    EXPECT_EQ(cup->getPosition()[0], local[0]);
    EXPECT_GT(std::hypot(after[0] - before[0], after[1] - before[1]), 0.1);
    EXPECT_NEAR(after[2], before[2], 1e-6);
    expectRoundTrip(scene, "carousel.xml");
}

TEST_F(SceneTest, AgentsStandWhereTheirBodiesAreBeforeTheFirstFrame) {
    Scene scene(scenes / "models" / "tower.dae");
    EXPECT_NEAR(scene.getRoot().getChild("ball")->getPosition()[0], -2.9, 1e-6);
    EXPECT_NEAR(scene.getRoot().getChild("ground")->getPosition()[2], -0.25, 1e-6);
    expectRoundTrip(scene, "first.xml");
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
    const auto writtenPath = [&](const std::filesystem::path& file) {
        std::filesystem::create_directories(file.parent_path());
        scene.write(file);
        std::stringstream text;
        text << std::ifstream(file).rdbuf();
        const std::string whole = text.str();
        const std::size_t start = whole.find("value=\"") + 7;
        return whole.substr(start, whole.find('"', start) - start);
    };
    EXPECT_EQ(writtenPath(folder / "beside.xml"), "carousel.dae");
    EXPECT_EQ(writtenPath(folder / "deep" / "below.xml"), (folder / "carousel.dae").string());
}

TEST_F(SceneTest, NewAgentsOfAPatchGetTheirPlaceAndGeometry) {
    Scene scene(scenes / "carousel.xml",
                {write("patch.xml", "<AgentNode><AgentNode name='cup_1_1'><Transform><Translate>1 2 3</Translate>"
                                    "<Rotate>0 0 1 0</Rotate></Transform><Component class='GeometryComponent'/>"
                                    "</AgentNode></AgentNode>")});
    agent::AgentNode* const cup = scene.getRoot().getChild("cup_1_1");
    ASSERT_NE(cup, nullptr);
    EXPECT_EQ(cup->getPosition()[2], 3);
    EXPECT_EQ(countShown(*cup), 1);
}

TEST_F(SceneTest, AReloadBeginsAnewAndAFailedOneChangesNothing) {
    const std::filesystem::path file = folder / "tower.xml";
    std::filesystem::copy(scenes / "tower.xml", file);
    std::filesystem::create_directories(folder / "models");
    std::filesystem::copy(scenes / "models" / "tower.dae", folder / "models" / "tower.dae");
    Scene scene(file);
    const std::string start = textOf(scene);
    runFrames(scene, 30);
    const std::string later = textOf(scene);
    EXPECT_TRUE(later != start);

    write("tower.xml", "<AgentNode><Component");
    EXPECT_THROW(scene.reload(), ViewerError);
    EXPECT_TRUE(textOf(scene) == later);
    EXPECT_EQ(agent::AgentNode::dynamicsWorld, &scene.getWorld());
    runFrames(scene, 1);
    EXPECT_TRUE(textOf(scene) != later);

    std::filesystem::copy(scenes / "tower.xml", file, std::filesystem::copy_options::overwrite_existing);
    scene.reload();
    EXPECT_TRUE(textOf(scene) == start);
    EXPECT_EQ(scene.getGraph().getNumChildren(), 1U);
    runFrames(scene, 30);
    EXPECT_TRUE(textOf(scene) == later);
}

} // namespace

} // namespace tessarin::viewer
