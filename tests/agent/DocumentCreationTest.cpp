#include "AgentTest.h"

#include <agent/VisualModelComponent.h>
#include <tests/doubles/ModelLoaderDouble.h>
#include <xml_parser/XMLNode.h>

#include <sstream>

namespace tessarin::agent {
namespace {

Owned create(const std::string& text) {
    return Owned(AgentNode::createFromXmlString(text));
}

/// Registers a class whose objects write into the journal, under the name "Recorder".
Journal& recorder() {
    static Journal journal;
    struct Factory final : SimObjectFactory {
        SimObject* create() override {
            return new RecordingComponent(&journal, {}, Events{AgentEvent::AGENT_CREATED, AgentEvent::AGENT_MODIFIED});
        }
    };
    static Factory factory;
    SimObjectDB::instance()->registerFactory(&factory, "Recorder");
    journal.clear();
    return journal;
}

TEST(CreateFromXml, BuildsTheBranchAndLogsEachStep) {
    LogCapture log;
    const Owned agent = create(R"(<AgentNode name="truck" colour="red">
        ignored text <Other><Component class="JointComponent"/></Other>
        <Component class="JointComponent"><name>ignored</name></Component>
        <Component class="VisualModelComponent" name="model">
            <field name="filePath" value=" a b "/><field name="nothing" value="x"/><field value="y"/>
        </Component>
        <AgentNode name="wheel"><AgentNode/></AgentNode><AgentNode name="wheel"/>
        <Component class="JointComponent" name="JointComponent"/></AgentNode>)");
    ASSERT_NE(agent, nullptr);
    EXPECT_THAT(log.take(),
                ElementsAre("600 Creating AgentNode(truck)", "600 Creating Component JointComponent",
                            "600 Creating Component VisualModelComponent",
                            "600 Component(VisualModelComponent).filePath= a b ",
                            "600 Component(VisualModelComponent).nothing=x", "600 Component(VisualModelComponent).=y",
                            "300 No model loader is set to load  a b ", "600 Creating AgentNode(wheel)",
                            "600 Creating AgentNode()", "600 Creating AgentNode(wheel)",
                            "600 Creating Component JointComponent"));
    EXPECT_EQ(agent->getName(), "truck");
    EXPECT_EQ(agent->getParent(), nullptr);
    EXPECT_EQ(agent->getOsgTransform()->getName(), "AgentNode MatTrans ");
    EXPECT_THAT(childNames(*agent), ElementsAre("wheel", "wheel"));
    EXPECT_THAT(childNames(*agent->getChild("wheel")), ElementsAre(""));
    const std::vector<Component*> components = componentsOf(*agent);
    ASSERT_EQ(components.size(), 3u);
    EXPECT_EQ(components[0]->getName(), "JointComponent");
    EXPECT_EQ(components[1]->getAsString("filePath"), " a b ");
    EXPECT_EQ(components[2]->getName(), "JointComponent");
}

TEST(CreateFromXml, TakesAComponentThroughItsStepsAndTellsTheBranchLast) {
    Journal& journal = recorder();
    const Owned agent = create("<AgentNode><AgentNode><Component class='Recorder'/></AgentNode>"
                               "<Component class='Recorder'/></AgentNode>");
    EXPECT_THAT(journal,
                ElementsAre("setAgentNode", "getSupportedEvents", "attached", "initialize", "setAgentNode",
                            "getSupportedEvents", "attached", "initialize", "onAgentCreated", "onAgentCreated"));
}

TEST(CreateFromXml, LeavesOutWhatCannotBeMade) {
    LogCapture log;
    const Owned agent = create("<AgentNode name='a'><Component name='n'/><Component class='Unknown'/>"
                               "<AgentNode name='child'/></AgentNode>");
    EXPECT_THAT(log.takeErrors(),
                ElementsAre("Error creating component  from xml", "AgentNode a could not add a component from XML",
                            "Error creating component Unknown from xml",
                            "AgentNode a could not add a component from XML"));
    EXPECT_THAT(childNames(*agent), ElementsAre("child"));
    EXPECT_THAT(componentsOf(*agent), IsEmpty());

    for (const char* const text : {"", "no document", "<agentnode/>", "<Component class='JointComponent'/>"})
        EXPECT_EQ(create(text), nullptr) << text;
    EXPECT_EQ(create("<AgentNode><AgentNode/>"), nullptr) << "no half document";
    std::istringstream empty;
    EXPECT_EQ(AgentNode::createFromXml(empty), nullptr);
    EXPECT_EQ(AgentNode::createFromXml(static_cast<xml_parser::XMLNode*>(nullptr)), nullptr);
    EXPECT_EQ(AgentNode::createComponentFromXml(nullptr), nullptr);
    EXPECT_THAT(log.take(), IsEmpty());

    const xml_parser::XMLNode unnamed("AgentNode", nullptr);
    const Owned fromNode(AgentNode::createFromXml(const_cast<xml_parser::XMLNode*>(&unnamed)));
    EXPECT_THAT(log.take(), ElementsAre("600 Creating AgentNode()"));
}

TEST(CreateFromXml, ReadsATransformOnlyInAModification) {
    const std::string document = "<AgentNode><Transform><Translate>1  2   3 </Translate><Rotate>0 0 1 0</Rotate>"
                                 "</Transform></AgentNode>";
    const Owned agent = create(document);
    EXPECT_TRUE(agent->getPosition() == vec(0, 0, 0));
    agent->modifyWithXml(document);
    EXPECT_TRUE(agent->getPosition() == vec(1, 2, 3));
    EXPECT_NEAR(agent->getRotation()[2], 1.0, 1e-15);
}

// The component's name decides, not its class.
TEST(HandOver, BeginsBehindTheComponentNamedVisualModelComponent) {
    LogCapture log;
    Journal& journal = recorder();
    const Owned agent = create(R"(<AgentNode name="a">
        <AgentNode name="early"><Transform><Translate>1 0 0</Translate><Rotate>0 0 0 1</Rotate></Transform></AgentNode>
        <Component class="JointComponent"/>
        <Component class="Recorder" name="VisualModelComponent"/>
        <Component class="JointComponent" name="late"/>
        <AgentNode name="late"><Transform><Translate>2 0 0</Translate><Rotate>0 0 0 1</Rotate></Transform>
            <Component class="Recorder"/></AgentNode>
        <Transform><Translate>3 0 0</Translate><Rotate>0 0 0 1</Rotate></Transform></AgentNode>)");
    EXPECT_EQ(agent->getPosition()[0], 3.0);
    EXPECT_EQ(agent->getChild("early")->getPosition()[0], 1.0) << "was there when the modification came";
    EXPECT_EQ(agent->getChild("late")->getPosition()[0], 0.0) << "was made by it";
    std::vector<std::string> names;
    for (const Component* const component : componentsOf(*agent))
        names.push_back(component->getName());
    EXPECT_THAT(names, ElementsAre("JointComponent", "VisualModelComponent", "JointComponent", "late"))
        << "one without a name attribute is made again";
    const std::vector<std::string> made{"setAgentNode", "getSupportedEvents", "attached", "initialize"};
    std::vector<std::string> expected(made);
    expected.insert(expected.end(), made.begin(), made.end());
    expected.insert(expected.end(),
                    {"onAgentCreated", "onAgentModified", "onAgentModified", "onAgentCreated", "onAgentCreated"});
    EXPECT_EQ(journal, expected);
    EXPECT_THAT(log.takeErrors(), IsEmpty());
}

TEST(HandOver, AVisualModelWithoutANameAttributeIsMadeTwice) {
    doubles::ModelLoaderDouble loader;
    const Owned agent = create("<AgentNode><Component class='VisualModelComponent'>"
                               "<field name='filePath' value='m'/></Component></AgentNode>");
    EXPECT_EQ(componentsOf(*agent).size(), 2u);
    EXPECT_THAT(loader.paths, ElementsAre("m", "m"));
    const Owned other = create("<AgentNode><Component class='VisualModelComponent' name='other'>"
                               "<field name='filePath' value='o'/></Component>"
                               "<Transform><Translate>1 1 1</Translate><Rotate>0 0 0 1</Rotate></Transform>"
                               "</AgentNode>");
    EXPECT_EQ(componentsOf(*other).size(), 1u);
    EXPECT_TRUE(other->getPosition() == vec(0, 0, 0)) << "starts no modification";
}

} // namespace
} // namespace tessarin::agent
