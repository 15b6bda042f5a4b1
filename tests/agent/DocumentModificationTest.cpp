#include "AgentTest.h"

#include <agent/GeometryComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/VisualModelComponent.h>
#include <tests/doubles/ModelLoaderDouble.h>
#include <tests/doubles/PhysicsDoubles.h>
#include <xml_parser/XMLNode.h>

#include <osg/MatrixTransform>
#include <osg/Switch>

#include <locale>
#include <sstream>

namespace tessarin::agent {
namespace {

std::string pose(const std::string& translate, const std::string& rotate = "0 0 0 1") {
    return "<Transform><Translate>" + translate + "</Translate><Rotate>" + rotate + "</Rotate></Transform>";
}

std::string document(const std::string& content) {
    return "<AgentNode>" + content + "</AgentNode>";
}

std::string geometry(const std::string& agent) {
    return "<AgentNode name='" + agent + "'><Component class='GeometryComponent' name='g'/></AgentNode>";
}

TEST(ModifyWithXml, MatchesByNameAndMakesWhatIsMissing) {
    LogCapture log;
    Journal journal;
    AgentNode node("old");
    AgentNode* const child = node.addChild("child");
    AgentNode* const unnamed = node.addChild("");
    node.addComponent("VisualModelComponent");
    listen(child, journal, Events{AgentEvent::AGENT_MODIFIED, AgentEvent::AGENT_CREATED});
    const std::string patch = "<AgentNode name='new'><AgentNode name='child'><AgentNode name='below'/></AgentNode>"
                              "<AgentNode/><AgentNode name='added'>" +
                              pose("1 2 3") +
                              "</AgentNode>"
                              "<Component class='Unknown' name='VisualModelComponent'>"
                              "<field name='filePath' value='m'/><field name='filePath'/></Component>"
                              "<Component class='JointComponent' name='j'/><Component class='Unknown' name='j'/>"
                              "<Component class='Unknown' name='u'/><Component/></AgentNode>";
    node.modifyWithXml(patch);
    EXPECT_EQ(node.getName(), "new");
    EXPECT_THAT(childNames(node), ElementsAre("child", "", "added"));
    EXPECT_EQ(node.getChild(""), unnamed);
    EXPECT_NE(child->getChild("below"), nullptr);
    EXPECT_TRUE(node.getChild("added")->getPosition() == vec(0, 0, 0)) << "a new child's transform stays unread";
    EXPECT_EQ(node.getComponent("VisualModelComponent")->getAsString("filePath"), "");
    EXPECT_EQ(componentsOf(node).size(), 2u);
    EXPECT_THAT(journal, ElementsAre("child.onAgentModified"));
    EXPECT_THAT(log.takeErrors(),
                ElementsAre("Error creating component Unknown from xml",
                            "AgentNode u could not add a component from XML", "Error creating component  from xml",
                            "AgentNode  could not add a component from XML"))
        << "and no model was loaded, for which a loader is missing";
    node.modifyWithXml(patch);
    EXPECT_THAT(childNames(node), ElementsAre("child", "", "added"));
    EXPECT_EQ(componentsOf(node).size(), 2u);
    EXPECT_TRUE(node.getChild("added")->getPosition() == vec(1, 2, 3));
    node.modifyWithXml(document("<Component class='JointComponent'/>"));
    node.modifyWithXml(document("<Component class='JointComponent'/>"));
    EXPECT_EQ(componentsOf(node).size(), 4u);
}

TEST(ModifyWithXml, SendsItsEventUnlessThereIsNoDocument) {
    LogCapture log;
    Journal journal;
    AgentNode node("node");
    listen(&node, journal, Events{AgentEvent::AGENT_MODIFIED});
    node.modifyWithXml("<AgentNode>");
    node.modifyWithXml(static_cast<xml_parser::XMLNode*>(nullptr));
    EXPECT_THAT(journal, IsEmpty());
    node.modifyWithXml("<Other name='x'><Component class='Unknown'/></Other>");
    EXPECT_THAT(journal, ElementsAre("node.onAgentModified"));
    EXPECT_EQ(node.getName(), "node");
    EXPECT_THAT(log.take(), IsEmpty());
    std::istringstream stream("<AgentNode/>");
    node.modifyWithXml(stream);
    EXPECT_EQ(journal.size(), 2u);
    EXPECT_THAT(log.take(), ElementsAre("600 Creating AgentNode()"));
}

TEST(ModifyWithXml, ANewChildHearsOfItsCreationBeforeItHasAParent) {
    static AgentNode* parentAtCreation;
    static Journal journal;
    struct Factory final : SimObjectFactory {
        SimObject* create() override {
            auto* const made = new RecordingComponent(&journal, {}, Events{AgentEvent::AGENT_CREATED});
            made->actions["onAgentCreated"] = [made] { parentAtCreation = made->getAgentNode()->getParent(); };
            return made;
        }
    };
    static Factory factory;
    SimObjectDB::instance()->registerFactory(&factory, "Newborn");
    AgentNode node;
    parentAtCreation = &node;
    node.modifyWithXml(document("<AgentNode name='c'><Component class='Newborn'/></AgentNode>"));
    EXPECT_EQ(parentAtCreation, nullptr);
    EXPECT_EQ(journal.back(), "onAgentCreated");
}

struct NumberText {
    std::string text;
    bool isRead;
    double x, y, z;
};

TEST(ModifyWithXml, NumberListsAreCutAtBlanksAlone) {
    struct CommaDecimals : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaDecimals));
    LogCapture log;
    for (const NumberText& test : std::vector<NumberText>{
             {"1  2   3", true, 1, 2, 3},
             {"  -1.5 +2e1 .25 ", true, -1.5, 20, 0.25},
             {"1 2 3 4 x", true, 1, 2, 3},
             {"1m 2,5 3.5.6", true, 1, 2, 3.5},
             {"\t1 \n2 \n3\n", true, 1, 2, 3},
             {"1\n5 2 3", true, 1, 2, 3}, // a line break parts no numbers: the rest of the token is left
             {"1e-999 0x10 1e", true, 0, 0, 1},
             {"1.7976931348623157e308 1 1", true, 1.7976931348623157e308, 1, 1},
             {"1 2", false, 0, 0, 0},
             {"1\n2\n3", false, 0, 0, 0},
             {"", false, 0, 0, 0},
             {"1 x 3", false, 0, 0, 0},
             {"1 - 3", false, 0, 0, 0},
             {"1 nan 3", false, 0, 0, 0},
             {"1 inf 3", false, 0, 0, 0},
             {"1e999 2 3", false, 0, 0, 0}}) {
        AgentNode node("node");
        node.setPosition(vec(7, 7, 7));
        node.modifyWithXml(document(pose(test.text)));
        EXPECT_TRUE(node.getPosition() == (test.isRead ? vec(test.x, test.y, test.z) : vec(7, 7, 7))) << test.text;
        const auto error = "AgentNode node could not read its Transform from XML: Translate needs 3 numbers";
        EXPECT_EQ(log.takeErrors(), test.isRead ? Journal{} : Journal{error}) << test.text;
    }
    std::locale::global(before);

    AgentNode node("node");
    node.modifyWithXml(document(pose("1 2 3", "0 0 1")));
    node.modifyWithXml(document("<Transform><Translate>1 2 3</Translate></Transform>"));
    node.modifyWithXml(document("<Transform><Rotate>0 0 0 1</Rotate></Transform>"));
    EXPECT_TRUE(node.getPosition() == vec(0, 0, 0));
    EXPECT_EQ(log.takeErrors().size(), 3u);
    node.modifyWithXml(document("<transform><Translate>1 2 3</Translate><Rotate>0 0 0 1</Rotate></transform>"));
    EXPECT_TRUE(node.getPosition() == vec(0, 0, 0));
}

TEST(ModifyWithXml, TheQuaternionIsTakenAsItStands) {
    AgentNode node;
    node.modifyWithXml(document(pose("1 2 3", "0.5 1 1.5 2")));
    const gmtl::Matrix<double, 4, 4> matrix = node.getMatrix();
    const double expected[4][4] = {{-5.5, -5, 5.5, 1}, {7, -4, 1, 2}, {-2.5, 5, -1.5, 3}, {0, 0, 0, 1}};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(matrix[row][column], expected[row][column]) << row << column;
}

class GeometryStep : public testing::Test {
protected:
    GeometryStep() {
        visualModel->setFilePath("m");
        loader.models["m"] = model;
        wheel->setName("wheel");
        wheel->setMatrix(osg::Matrix::translate(1, 2, 3));
        plain->setName("plain");
        model->addChild(wheel);
        model->addChild(plain);
        root.addComponent(visualModel);
    }

    osg::Node* nodeOf(const std::string& agent) { return root.getChild(agent)->getComponent("g")->getOsgNode(); }

    LogCapture log;
    doubles::ModelLoaderDouble loader;
    osg::ref_ptr<osg::Switch> model = new osg::Switch;
    osg::ref_ptr<osg::MatrixTransform> wheel = new osg::MatrixTransform;
    osg::ref_ptr<osg::Group> plain = new osg::Group;
    AgentNode root{"root"};
    VisualModelComponent* visualModel = new VisualModelComponent;
};

TEST_F(GeometryStep, TiesGeometryToTheModelsNodeOfTheAgentsName) {
    visualModel->initialize();
    for (const char* const name : {"wheel", "plain", "unknown"})
        root.addChild(name);
    root.modifyWithXml(document(geometry("wheel") + geometry("plain") + geometry("unknown")));
    EXPECT_EQ(nodeOf("wheel"), wheel);
    EXPECT_TRUE(wheel->getMatrix().isIdentity());
    EXPECT_EQ(wheel->getNumParents(), 2u) << "it stays in the model as well";
    EXPECT_EQ(nodeOf("plain"), plain);
    EXPECT_EQ(nodeOf("unknown"), model);
    EXPECT_EQ(entriesIn(*root.getChild("wheel"), wheel), 1);
    wheel->setMatrix(osg::Matrix::translate(1, 2, 3));
    root.modifyWithXml(document(geometry("wheel")));
    EXPECT_TRUE(wheel->getMatrix().isIdentity()) << "each time a document names it";
    EXPECT_EQ(entriesIn(*root.getChild("wheel"), wheel), 1);

    root.modifyWithXml(document(geometry("made")));
    EXPECT_EQ(nodeOf("made"), nullptr) << "creation has no geometry step";
    EXPECT_THAT(log.takeErrors(), IsEmpty());
}

TEST_F(GeometryStep, AnEmptyModelEndsThePassOverTheElement) {
    root.addChild("wheel");
    root.modifyWithXml(document("<AgentNode name='wheel'><Component class='GeometryComponent' name='g'/>"
                                "<AgentNode name='skipped'/></AgentNode><AgentNode name='next'/>"));
    EXPECT_THAT(childNames(*root.getChild("wheel")), IsEmpty());
    EXPECT_NE(root.getChild("next"), nullptr) << "the calling pass goes on";
    EXPECT_THAT(log.takeErrors(), IsEmpty());
}

TEST_F(GeometryStep, WithoutAVisualModelTheComponentKeepsWhatItHas) {
    AgentNode alone("alone");
    AgentNode* const child = alone.addChild("child");
    auto* const component = new GeometryComponent(plain);
    component->setName("g");
    child->addComponent(component);
    alone.modifyWithXml(document(geometry("child") + "<AgentNode name='next'/>"));
    EXPECT_THAT(log.takeErrors(),
                ElementsAre("Failed to find VisualModelComponent thats corresponds to GeometryComponent"));
    EXPECT_EQ(component->getOsgNode(), plain);
    EXPECT_NE(alone.getChild("next"), nullptr);

    // Agents taken out go on naming their parents, so the way up can be a circle.
    alone.removeChild(child);
    child->addChild(&alone);
    alone.modifyWithXml(document("<Component class='GeometryComponent' name='x'/>"));
    EXPECT_EQ(log.takeErrors().size(), 1u);
    child->removeChild(&alone);
    delete child;
}

TEST(RigidBodyStep, PutsTheBodyWhereTheTransformSays) {
    LogCapture log;
    AgentNode node("node");
    auto* const component = new RigidBodyComponent;
    auto* const body = new doubles::BodyDouble;
    node.addComponent(component);
    const std::string element = "<Component class='RigidBodyComponent' name='RigidBodyComponent'/>";
    component->setName("RigidBodyComponent");
    node.modifyWithXml(document(element)); // without a body
    component->setBody(body);
    node.modifyWithXml(document(pose("1 2 3", "0 0 1 0") + element));
    EXPECT_THAT(body->calls, ElementsAre("setMatrix", "setPosition", "setRotation"));
    EXPECT_TRUE(body->pose == node.getMatrix());
    EXPECT_EQ(body->rotation[2], 1.0);
    node.modifyWithXml(document(element));
    EXPECT_TRUE(body->pose == doubles::BodyDouble::Matrix()) << "no Transform: the origin";
    EXPECT_TRUE(node.getPosition() == vec(1, 2, 3)) << "and the agent stays";

    body->calls.clear();
    node.modifyWithXml(document(pose("x") + element));
    EXPECT_EQ(log.takeErrors().size(), 1u);
    component->setName("body");
    node.modifyWithXml(document(pose("4 5 6") + "<Component class='RigidBodyComponent' name='body'/>"));
    EXPECT_THAT(body->calls, IsEmpty()) << "an unreadable Transform and another name move nothing";
    node.addComponent("JointComponent")->setName("RigidBodyComponent");
    node.modifyWithXml(document(pose("1 1 1") + element));
    EXPECT_TRUE(node.getPosition() == vec(1, 1, 1));
    EXPECT_THAT(body->calls, IsEmpty());
}

} // namespace
} // namespace tessarin::agent
