#include <tests/agent/AgentTest.h>

namespace tessarin::agent {
namespace {

using Joint = JointDouble<dynamics::DynamicsJoint>;

TEST(AgentCopy, SeesWhatItsSourceHoldsAndOwnsNothing) {
    Journal journal;
    AgentNode parent("parent");
    AgentNode* const source = parent.addChild("source");
    listen(source->addChild("child"), journal);
    RecordingComponent* const component = listen(source, journal);
    Component* const body = source->addComponent("RigidBodyComponent");
    source->setSelectionPriority(7);
    {
        AgentNode copy(*source);
        EXPECT_EQ(copy.getName() + ' ' + childNames(copy) + ' ' + childNames(parent), "source child source");
        EXPECT_TRUE(copy.getParent() == &parent && copy.getSelectionPriority() == 7 && copy.getRigidBody() == body);
        EXPECT_THAT(componentsOf(copy), ElementsAre(component, body));
        copy.setOsgTransform(source->getOsgTransform());
        EXPECT_EQ(AgentNode::getAgentNode(copy.getOsgTransform()), source) << "the transform leads where it led";
        copy.setName("copy");
        EXPECT_EQ(AgentNode::getAgentNode("copy"), nullptr);
        listen(&copy, journal, Events{AgentEvent::MOUSE_OVER}); // connected to the signals that both have
        listen(source, journal);
        EXPECT_EQ(send(*source, journal, AgentEvent::MOUSE_OVER), "copy.mouseOver");
        EXPECT_EQ(send(copy, journal), "source.update source.update child.update");
        copy.getChildren().front()->markForRemoval();
        EXPECT_EQ(send(copy, journal, AgentEvent::POST_UPDATE), "") << "not the copy's to delete";
        delete body;
        EXPECT_EQ(copy.getRigidBody(), nullptr);
    }
    EXPECT_EQ(take(journal), "copy.deleted");
    EXPECT_EQ(source->getOsgTransform()->getNumParents(), 1u);
    EXPECT_EQ(send(parent, journal), "source.update source.update child.update child.deleted");
}

TEST(AgentCopy, OutlivesItsSourceEmpty) {
    Journal journal;
    auto source = std::make_unique<AgentNode>("source");
    listen(source->addChild("child"), journal);
    listen(source.get(), journal);
    AgentNode* const taken = source->addChild("taken");
    listen(taken, journal);
    AgentNode copy(*source), second(copy);
    second.addChild("own");
    {
        AgentNode third(*source);
        third.addChild(taken); // from now on it owns what it has only seen
        source->removeChild(taken);
    }
    EXPECT_EQ(take(journal), "taken.deleted");
    source.reset();
    EXPECT_EQ(take(journal), "source.deleted child.deleted");
    EXPECT_EQ(childNames(copy) + childNames(second), "own");
    EXPECT_EQ(componentsOf(second).size(), 0u);
    second.setPosition(vec(1, 0, 0)); // the transform is shared and lives on
    EXPECT_TRUE(copy.getPosition()[0] == 1.0 && !AgentNode::getAgentNode(copy.getOsgTransform()));
}

TEST(AgentCopy, AssignmentLetsGoAndThenSees) {
    Journal journal;
    AgentNode source("source"), target("target"), marked("marked"), parent;
    listen(source.addChild("child"), journal);
    const Owned released(target.addChild("released"));
    const std::unique_ptr<Component> component(listen(&target, journal));
    AgentNode& same = target;
    target = same;
    EXPECT_EQ(childNames(target), "released");
    target = source;
    EXPECT_EQ(component->getAgentNode(), nullptr);
    EXPECT_EQ(released->getOsgTransform()->getNumParents() + componentsOf(target).size(), 0u);
    EXPECT_EQ(send(target, journal), "child.update");
    {
        for (int i = 0; i < 100; ++i) // so many leave the scene graph together
            marked.addChild("child");
        marked.addComponent("JointComponent");
        const AgentNode ending(marked);
        AgentNode view(source);
        view = marked;
        const osg::ref_ptr<osg::Transform> own = new osg::MatrixTransform;
        view.setOsgTransform(marked.getOsgTransform());
        EXPECT_EQ(AgentNode::getAgentNode(marked.getOsgTransform()), &marked);
        view.setOsgTransform(own);
        EXPECT_EQ(AgentNode::getAgentNode(own), &view);
        view = target; // it lets go of what others see too
    }
    EXPECT_EQ(marked.getOsgTransform()->getNumChildren(), 100u);
    source = target; // back again: nobody owns the child any more
    const Owned child(source.getChild("child"));
    marked.markForRemoval();
    AgentNode* const assigned = parent.addChild("assigned");
    listen(parent.addChild("late"), journal)->actions["update"] = [&] { *assigned = marked; };
    parent.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(childNames(parent), "late") << "a mark that comes by assignment is a mark";
}

TEST(ComponentCopy, OwnsNoBodyAndNoJointOfItsSource) {
    auto body = std::make_unique<RigidBodyComponent>();
    auto joint = std::make_unique<JointComponent>();
    auto* const held = new BodyDouble;
    body->setBody(held);
    joint->setJoint(new Joint);
    RigidBodyComponent assigned;
    {
        BodyDouble released;
        assigned.setBody(&released);
        RigidBodyComponent seeing(assigned);
        assigned = seeing;
        EXPECT_EQ(released.userData, &assigned) << "what it holds already it keeps";
        assigned = *body;
        EXPECT_EQ(seeing.getBody(), nullptr) << "of whose end nobody would tell it";
        EXPECT_EQ(released.userData, nullptr) << "it belongs to the caller and points at nobody";
        const RigidBodyComponent ends(*body);
        const JointComponent jointEnds(*joint);
    }
    RigidBodyComponent copy(*body);
    JointComponent jointCopy(*joint);
    EXPECT_EQ(BodyDouble::alive + Joint::alive, 2);
    EXPECT_TRUE(copy.getBody() == held && assigned.getBody() == held && held->userData == body.get());
    EXPECT_EQ(jointCopy.getJoint(), joint->getJoint());
    body.reset();
    joint.reset();
    EXPECT_TRUE(!copy.getBody() && !assigned.getBody() && !jointCopy.getJoint());
    copy.update();
    EXPECT_EQ(BodyDouble::alive + Joint::alive, 0);
}

TEST(ComponentCopy, LeavesTheSourceConnectedAndForgetsAnAgentThatIsGone) {
    Journal journal;
    auto node = std::make_unique<AgentNode>("node");
    RecordingComponent* const source = listen(node.get(), journal);
    {
        AgentNode other("other");
        other.addComponent(new RecordingComponent(*source));
        const std::unique_ptr<RecordingComponent> assigned(listen(&other, journal));
        *assigned = *source;
        EXPECT_EQ(send(other, journal), "node.update node.update");
        other.removeComponent(assigned.get());
        EXPECT_EQ(send(other, journal), "node.update");
    }
    EXPECT_EQ(send(*node, journal), "node.update") << "the copies' ends are none of the source's business";
    GeometryComponent geometry(new osg::Node);
    node->addComponent(&geometry);
    GeometryComponent copy(geometry);
    node->removeComponent(&geometry);
    EXPECT_TRUE(copy.getAgentNode() == node.get() && copy.getOsgNode() == geometry.getOsgNode());
    node.reset();
    EXPECT_EQ(copy.getAgentNode(), nullptr);

    AgentNode root;
    auto modifier = std::make_unique<SceneGraphModifierComponent>();
    modifier->scheduleAddChild(&root, new AgentNode("child"));
    SceneGraphModifierComponent withTheSameWork(*modifier);
    modifier.reset();
    withTheSameWork.update();
    EXPECT_EQ(childNames(root), "child");
}

} // namespace
} // namespace tessarin::agent
