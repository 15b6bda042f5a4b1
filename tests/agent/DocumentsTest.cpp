#include <tests/agent/AgentTest.h>

#include <xml_parser/XMLNode.h>

namespace tessarin::agent {
namespace {

std::string agent(const std::string& content, const std::string& name = {}) {
    return "<AgentNode name='" + name + "'>" + content + "</AgentNode>";
}

std::string component(const std::string& className, const std::string& name = {}, const std::string& fields = {}) {
    return "<Component class='" + className + "' name='" + name + "'>" + fields + "</Component>";
}

std::string pose(const std::string& translate, const std::string& rotate = "0 0 0 1") {
    return "<Transform><Translate>" + translate + "</Translate><Rotate>" + rotate + "</Rotate></Transform>";
}

std::string componentNames(AgentNode& node) {
    Journal names;
    for (const Component* const held : componentsOf(node))
        names.push_back(held->getName());
    return take(names);
}

const std::string steps = "setAgentNode getSupportedEvents attached initialize ";

TEST(CreateFromXml, BuildsTheBranchAndLogsEachStep) {
    LogCapture log;
    const Owned made(AgentNode::createFromXmlString(R"(<AgentNode name="truck" colour="red">
        ignored text <Other><Component class="JointComponent"/></Other><Component class="Unknown"/>
        <Component class="JointComponent"><name>ignored</name></Component>
        <Component class="VisualModelComponent" name="model">
            <field name="filePath" value=" a b "/><field name="nothing" value="x"/><field value="y"/>
        </Component>
        <AgentNode name="wheel"><AgentNode/></AgentNode><AgentNode name="wheel"/></AgentNode>)"));
    ASSERT_NE(made, nullptr);
    Journal lines = log.take();
    EXPECT_EQ(take(lines), "600 Creating AgentNode(truck) 600 Creating Component Unknown "
                           "300 Error creating component Unknown from xml "
                           "300 AgentNode truck could not add a component from XML "
                           "600 Creating Component JointComponent 600 Creating Component VisualModelComponent "
                           "600 Component(VisualModelComponent).filePath= a b  "
                           "600 Component(VisualModelComponent).nothing=x 600 Component(VisualModelComponent).=y "
                           "300 No model loader is set to load  a b  (line 4) 600 Creating AgentNode(wheel) "
                           "600 Creating AgentNode() 600 Creating AgentNode(wheel)");
    EXPECT_EQ(made->getName() + ' ' + childNames(*made) + ' ' + childNames(*made->getChild("wheel")) + ' ' +
                  componentNames(*made) + made->getComponent("model")->getAsString("filePath"),
              "truck wheel wheel  JointComponent model a b ");
    for (const char* const text :
         {"", "no document", "<agentnode/>", "<Component class='JointComponent'/>", "<AgentNode><AgentNode/>"})
        EXPECT_EQ(AgentNode::createFromXmlString(text), nullptr) << text;
    EXPECT_EQ(AgentNode::createFromXml(static_cast<xml_parser::XMLNode*>(nullptr)), nullptr);
    EXPECT_EQ(AgentNode::createComponentFromXml(nullptr), nullptr);
}

// A component of that name, whatever its class, hands the element over to a modification.
TEST(CreateFromXml, TellsTheBranchLastAndIsHandedOverBehindTheVisualModelComponent) {
    Journal& journal = recorder().journal;
    const Owned made(
        AgentNode::createFromXmlString(agent(pose("1 2 3") + agent(component("Recorder")) + component("Recorder"))));
    EXPECT_EQ(take(journal), steps + steps + "onAgentCreated onAgentCreated");
    EXPECT_TRUE(made->getPosition() == vec(0, 0, 0)) << "creation reads no transform";

    const Owned handed(AgentNode::createFromXmlString(agent(
        agent(pose("1 0 0"), "early") + component("JointComponent") + component("Recorder", "VisualModelComponent") +
        component("JointComponent", "late") + agent(pose("2 0 0") + component("Recorder"), "late") + pose("3 0 0"))));
    EXPECT_EQ(take(journal),
              steps + steps + "onAgentCreated onAgentModified onAgentModified onAgentCreated onAgentCreated");
    EXPECT_EQ(handed->getPosition()[0], 3.0);
    EXPECT_EQ(handed->getChild("early")->getPosition()[0], 1.0) << "was there when the modification came";
    EXPECT_EQ(handed->getChild("late")->getPosition()[0], 0.0) << "was made by it";
    EXPECT_EQ(componentNames(*handed), "JointComponent VisualModelComponent JointComponent late")
        << "one without a name attribute is made again";
}

TEST(ModifyWithXml, MatchesByNameAndMakesWhatIsMissing) {
    LogCapture log;
    Journal journal;
    AgentNode node("old");
    AgentNode* const child = node.addChild("child");
    AgentNode* const unnamed = node.addChild("");
    node.addComponent("VisualModelComponent");
    listen(child, journal, Events{AgentEvent::AGENT_MODIFIED, AgentEvent::AGENT_CREATED});
    recorder().prepare = [](RecordingComponent& made) {
        made.actions["onAgentCreated"] = [&] { EXPECT_FALSE(made.getAgentNode()->getParent()) << "not yet"; };
    };
    const std::string patch = agent(
        agent(agent("", "below"), "child") + agent("") + agent(pose("1 2 3") + component("Recorder", "r"), "added") +
            component("Unknown", "VisualModelComponent", "<field name='filePath' value='m'/>") +
            component("JointComponent", "j") + component("Unknown", "u"),
        "new");
    for (const double x : {0.0, 1.0}) { // a new child's transform stays unread
        node.modifyWithXml(patch);
        EXPECT_EQ(node.getName() + ' ' + childNames(node) + ' ' + childNames(*child), "new child  added below");
        EXPECT_TRUE(node.getChild("") == unnamed && node.getChild("added")->getPosition()[0] == x);
        EXPECT_EQ(componentNames(node), "VisualModelComponent j");
        EXPECT_EQ(node.getComponent("VisualModelComponent")->getAsString("filePath"), "m");
        EXPECT_EQ(take(journal), "child.onAgentModified");
        EXPECT_THAT(log.takeErrors(), ElementsAre("Error creating component Unknown from xml",
                                                  "AgentNode u could not add a component from XML"))
            << "and no model was loaded, for which a loader is missing";
    }
    node.modifyWithXml(agent(component("JointComponent") + component("JointComponent")));
    EXPECT_EQ(componentNames(node), "VisualModelComponent j JointComponent JointComponent");
    journal.clear();
    node.modifyWithXml("<AgentNode>"); // what is no document says nothing
    node.modifyWithXml(static_cast<xml_parser::XMLNode*>(nullptr));
    std::istringstream stream("<Other name='x'>" + component("JointComponent") + "</Other>");
    node.modifyWithXml(stream);
    EXPECT_EQ(node.getName() + ' ' + take(journal), "new child.onAgentModified");
}

// What is said in fixed words has its place in the log's context.
TEST(ModifyWithXml, LinesOfFixedWordsSayWhereInTheirContext) {
    LogCapture log;
    const auto context = [&] { return log.lastContext.substr(0, log.lastContext.find(' ')); };
    AgentNode node;
    node.modifyWithXml("<AgentNode>\n" + component("GeometryComponent") + "</AgentNode>", "crane.xml");
    EXPECT_EQ(context(), "crane.xml:2");
    node.modifyWithXml("<AgentNode>\n\n" + component("Unknown") + "</AgentNode>", "crane.xml");
    EXPECT_EQ(context(), "crane.xml:3");
    const Owned made(AgentNode::createFromXmlString("<AgentNode>\n" + component("Unknown") + "</AgentNode>"));
    EXPECT_EQ(log.lastContext.substr(0, 7), "line 2 ");
    xml_parser::XMLNode tree("AgentNode", nullptr);
    tree.addChild("Component");
    node.modifyWithXml(&tree);
    EXPECT_EQ(context(), log.lastContext) << "a tree of a program has no places";
}

TEST(ModifyWithXml, ReadsNumbersThatAreCutAtBlanksAlone) {
    const DecimalCommas locale;
    LogCapture log;
    const std::pair<const char*, gmtl::Vec<double, 3>> rows[] = {
        {"1  2   3", {1, 2, 3}},      {"  -1.5 +2e1 .25 ", {-1.5, 20, 0.25}}, {"1 2 3 4 x", {1, 2, 3}},
        {"\t1 \n2 \n3\n", {1, 2, 3}}, {"1m 2,5 3.5.6", {1, 2, 3.5}},          {"1\n5 2 3", {1, 2, 3}},
        {"1e-999 0x10 1e", {0, 0, 1}}};
    for (const auto& [text, expected] : rows) {
        AgentNode node;
        node.modifyWithXml(agent(pose(text)));
        EXPECT_TRUE(node.getPosition() == expected) << text;
    }
    EXPECT_THAT(log.takeErrors(), IsEmpty());
    AgentNode node("node");
    const auto error = [](const std::string& element, const std::string& found) {
        return "AgentNode node could not read its Transform from XML: " + element +
               " numbers separated by blanks only (no tabs or line breaks), but " + found +
               ", so its pose stays as it was (crane.xml:2)";
    };
    for (const std::string text : {"1 2", "1\n2\n3", "", "1 x 3", "1 - 3", "1 nan 3", "1 inf 3", "1 1e999 3"}) {
        node.modifyWithXml('\n' + agent(pose(text)), "crane.xml");
        EXPECT_THAT(log.takeErrors(), ElementsAre(error("Translate needs 3", "its text is \"" + text + '"')));
    }
    node.modifyWithXml('\n' + agent(pose("1 2 3", "0 0 1")), "crane.xml");
    std::istringstream without('\n' + agent("<Transform><Translate>1 2 3</Translate></Transform>"));
    node.modifyWithXml(without, "crane.xml");
    EXPECT_THAT(log.takeErrors(), ElementsAre(error("Rotate needs 4", "its text is \"0 0 1\""),
                                              error("Rotate needs 4", "it is missing")));
    EXPECT_TRUE(node.getPosition() == vec(0, 0, 0));
    node.modifyWithXml(agent(pose("1 2 3", "0.5 1 1.5 2"))); // the quaternion is taken as it stands
    gmtl::Matrix<double, 4, 4> expected;
    expected.set(-5.5, -5, 5.5, 1, 7, -4, 1, 2, -2.5, 5, -1.5, 3, 0, 0, 0, 1);
    EXPECT_TRUE(node.getMatrix() == expected);
}

TEST(GeometryStep, TiesGeometryToTheModelsNodeOfTheAgentsName) {
    LogCapture log;
    doubles::ModelLoaderDouble loader;
    const osg::ref_ptr<osg::MatrixTransform> wheel = new osg::MatrixTransform, model = new osg::MatrixTransform;
    wheel->setName("wheel");
    model->addChild(wheel);
    loader.models["m"] = model;
    AgentNode root("root"), alone("alone");
    Component* const visualModel = root.addComponent("VisualModelComponent")->setValue("filePath", "m");
    root.addChild("wheel");
    const std::string element = component("GeometryComponent", "g");
    root.modifyWithXml(agent(agent(element + agent("", "skipped"), "wheel") + agent("", "other")));
    EXPECT_EQ(childNames(*root.getChild("wheel")), "") << "an empty model ends the pass";
    EXPECT_EQ(childNames(root), "wheel other") << "but not the one around it";

    visualModel->initialize();
    for (const std::string& made : {agent(element, "made"), std::string()}) { // each time that a document names it
        wheel->setMatrix(osg::Matrix::translate(1, 2, 3));
        root.modifyWithXml(agent(agent(element, "wheel") + agent(element, "other") + made));
        EXPECT_TRUE(wheel->getMatrix().isIdentity());
        EXPECT_EQ(entriesIn(*root.getChild("wheel"), wheel) + entriesIn(*root.getChild("other"), model), 2);
        EXPECT_EQ(root.getChild("made")->getComponent("g")->getOsgNode(), nullptr) << "creation has no geometry step";
    }
    EXPECT_EQ(wheel->getParent(0), model) << "it stays in the model as well";
    EXPECT_THAT(log.takeErrors(), IsEmpty());

    const Owned child(alone.addChild("child"));
    child->addComponent(new GeometryComponent(wheel))->setName("g");
    alone.modifyWithXml(agent(agent(element, "child") + agent("", "next")));
    EXPECT_EQ(child->getComponent("g")->getOsgNode(), wheel) << "without a visual model it keeps what it has";
    EXPECT_EQ(childNames(alone), "child next");
    // Agents taken out go on naming their parents, so the way up can be a circle.
    alone.removeChild(child.get());
    child->addChild(&alone);
    alone.modifyWithXml(agent(element));
    EXPECT_EQ(log.takeErrors(),
              Journal(2, "Failed to find VisualModelComponent thats corresponds to GeometryComponent"));
    child->removeChild(&alone);
}

TEST(RigidBodyStep, PutsTheBodyWhereTheTransformSays) {
    AgentNode node("node");
    auto* const held = new RigidBodyComponent;
    auto* const body = new BodyDouble;
    node.addComponent(held)->setName("RigidBodyComponent");
    const std::string element = component("RigidBodyComponent", "RigidBodyComponent");
    node.modifyWithXml(agent(element)); // without a body
    held->setBody(body);
    node.modifyWithXml(agent(pose("1 2 3", "0 0 1 0") + element));
    EXPECT_EQ(take(body->calls), "setMatrix setPosition(1,2,3) setRotation(0,0,1,0)");
    EXPECT_TRUE(body->pose == node.getMatrix());
    node.modifyWithXml(agent(element));
    EXPECT_EQ(take(body->calls), "setMatrix setPosition(0,0,0) setRotation(0,0,0,1)") << "no Transform: the origin";
    EXPECT_TRUE(node.getPosition() == vec(1, 2, 3)) << "and the agent stays";
    node.modifyWithXml(agent(pose("x") + element));
    held->setName("body");
    node.modifyWithXml(agent(pose("4 5 6") + component("RigidBodyComponent", "body")));
    node.addComponent("JointComponent")->setName("RigidBodyComponent");
    node.modifyWithXml(agent(pose("1 1 1") + element));
    EXPECT_EQ(take(body->calls), "") << "an unreadable Transform, another name, another class move nothing";
}

std::string write(AgentNode& node) {
    std::ostringstream stream;
    node.createXml(stream);
    return stream.str();
}

TEST(CreateXml, WritesTransformThenComponentsThenChildrenInAnyLocale) {
    const DecimalCommas locale;
    AgentNode node;
    node.setPosition(vec(1.23456789, 1234567.0, -1e-5));
    node.setRotation({0.0, 1.0, 0.0, 0.0});
    node.addChild("child")->markForRemoval();
    node.addComponent("JointComponent")->setName("");
    node.addComponent("VisualModelComponent")->setAsString("filePath", "m<1>");
    EXPECT_EQ(write(node), R"(<AgentNode>
  <Transform>
    <Translate>1.23457 1.23457e+06 -1e-05</Translate>
    <Rotate>0 1 0 0</Rotate>
  </Transform>
  <Component class="JointComponent"/>
  <Component class="VisualModelComponent" name="VisualModelComponent">
    <field name="filePath" value="m&lt;1&gt;"/>
  </Component>
  <AgentNode name="child">
    <Transform>
      <Translate>0 0 0</Translate>
      <Rotate>0 0 0 1</Rotate>
    </Transform>
  </AgentNode>
</AgentNode>
)");
}

/// Fills trees with poses that six digits hold, and with names and texts that are hard to write down.
struct RandomTree {
    void fill(AgentNode& node, int depth) {
        const gmtl::Quat<double> turns[] = {{0, 0, 0, 1}, {1, 0, 0, 0}, {0.5, -0.5, 0.5, 0.5}, {0, 0.6, -0.8, 0}};
        node.setRotation(turns[below(4)]);
        node.setPosition(vec(below(1000) / 8.0, -below(1000), below(1000) * 1000.0));
        for (int i = below(3); i > 0; --i)
            node.addComponent("VisualModelComponent")
                ->setValue("filePath", text().c_str())
                ->setName(text() + char('0' + i));
        for (int i = depth > 0 ? below(4) : 0; i > 0; --i)
            fill(*node.addChild(text() + char('0' + i)), depth - 1); // unique, so that a document finds it
    }

    int below(int limit) { return static_cast<int>(generator() % static_cast<unsigned>(limit)); }

    std::string text() {
        static const char* const pieces[] = {"a", " ", "<", ">", "&", "\"", "'", "\n", "\t", "\r", "\xC3\xA9", "]]>"};
        std::string made;
        for (int i = below(6); i > 0; --i)
            made += pieces[below(12)];
        return made;
    }

    std::mt19937 generator;
};

TEST(RoundTrip, RandomTreesComeBack) {
    const doubles::ModelLoaderDouble loader;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        AgentNode original("root");
        RandomTree{std::mt19937(seed)}.fill(original, 4);
        const std::string document = write(original);
        const Owned copy(AgentNode::createFromXmlString(document));
        ASSERT_NE(copy, nullptr);
        copy->modifyWithXml(document); // creation alone leaves the transforms
        EXPECT_EQ(write(*copy), document);
    }
}

} // namespace
} // namespace tessarin::agent
