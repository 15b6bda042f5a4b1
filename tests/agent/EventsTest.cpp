#include <tests/agent/AgentTest.h>

#include <agent/CollisionData.h>

namespace tessarin::agent {
namespace {

TEST(Components, AreAttachedStepByStepAndFoundByName) {
    LogCapture log;
    Journal journal;
    AgentNode node("node");
    auto* const component = new RecordingComponent(&journal, {}, std::nullopt);
    component->osgNode = new osg::Node;
    for (const char* const step : {"setAgentNode", "getSupportedEvents", "attached"})
        component->actions[step] = [&] {
            journal.back() += "(" + std::to_string(entriesIn(node, component->osgNode)) +
                              std::to_string(componentsOf(node).size()) + std::to_string(log.take().size()) + ")";
        };
    EXPECT_EQ(node.addComponent(component), component);
    component->actions.clear();
    node.removeComponent(component);
    EXPECT_EQ(take(journal), "setAgentNode(000) getSupportedEvents(110) attached(111) setAgentNode null");
    EXPECT_EQ(entriesIn(node, component->osgNode), 0);
    node.addComponent(component); // and it can come back
    EXPECT_EQ(send(node, journal), "update");

    Component* const joint = node.getOrAddComponent("JointComponent");
    Component* const named = node.getOrAddComponent("RigidBodyComponent", "hinge");
    EXPECT_TRUE(node.getOrAddComponent("JointComponent") == joint && !node.getComponent("Hinge"));
    EXPECT_EQ(node.getOrAddComponent("GeometryComponent", "hinge"), named);
    EXPECT_THAT(componentsOf(node), ElementsAre(component, joint, named));
}

TEST(SendEvent, ReachesWhoAskedForItDepthFirst) {
    LogCapture log;
    Journal journal;
    AgentNode root("root"), open, choosy;
    AgentNode* const a = root.addChild("a");
    for (AgentNode* const node : {&root, a, a->addChild("a1"), root.addChild("b"), a})
        listen(node, journal);
    EXPECT_EQ(send(root, journal), "root.update a.update a.update a1.update b.update");
    EXPECT_EQ(send(*a, journal), "a.update a.update a1.update");

    listen(&choosy, journal, Events{AgentEvent::MOUSE_OVER, AgentEvent::RESERVED, AgentEvent::MOUSE_OVER});
    EXPECT_EQ(send(choosy, journal, AgentEvent::RESERVED), "");
    EXPECT_EQ(send(choosy, journal, AgentEvent::MOUSE_OVER), "mouseOver mouseOver");
    EXPECT_THAT(log.take(), IsEmpty());
    listen(&open, journal, std::nullopt);
    EXPECT_THAT(log.take(), ElementsAre("600 Component RecordingComponent does not implement getSupportedEvents."));
    for (int event = 0; event < AgentEvent::COUNT; ++event)
        open.sendEvent(static_cast<AgentEvent::_AgentEventEnum>(event));
    EXPECT_EQ(take(journal), "prePhysicsUpdate prePhysicsTick postPhysicsTick postPhysicsUpdate update postUpdate "
                             "mousePress mouseRelease mouseDrag mouseEnter mouseOver mouseExit windowResize "
                             "onAgentCreated onAgentModified");
}

TEST(Attachment, TwiceIsHeardTwiceRemovedAtOnceAndDeletedOnce) {
    const int before = RecordingComponent::alive;
    Journal journal;
    AgentNode root("root");
    {
        AgentNode other("other");
        RecordingComponent* const shared = listen(&other, journal);
        shared->osgNode = new osg::Node;
        for (int round = 0; round < 2; ++round) {
            root.removeComponent(shared);
            root.addComponent(shared);
            root.addComponent(shared);
            EXPECT_EQ(send(root, journal), "other.update other.update");
            EXPECT_EQ(entriesIn(root, shared->osgNode), 2);
        }
    }
    EXPECT_EQ(RecordingComponent::alive, before);
    EXPECT_EQ(componentsOf(root).size() + root.getOsgTransform()->getNumChildren(), 0u);
    EXPECT_EQ(send(root, journal), "");
}

// Two geometries of one agent both take the whole model where it has no node of the agent's name.
TEST(Attachment, GeometriesKeepTheirEntriesAlsoOfASharedNode) {
    AgentNode node;
    const osg::ref_ptr<osg::Node> shared = new osg::Node, other = new osg::Node;
    const auto first = std::make_unique<GeometryComponent>(shared);
    node.addComponent(first.get());
    node.addComponent(new GeometryComponent(shared));
    first->setOsgNode(shared);
    EXPECT_EQ(entriesIn(node, shared), 2);
    first->setOsgNode(other);
    EXPECT_TRUE(entriesIn(node, shared) == 1 && entriesIn(node, other) == 1);
    first->setOsgNode(nullptr);
    EXPECT_EQ(entriesIn(node, other), 0);
    *first = GeometryComponent(shared); // an assignment shows the new node as well
    EXPECT_EQ(entriesIn(node, shared), 2);
    node.removeComponent(first.get());
    EXPECT_EQ(entriesIn(node, shared), 1);
    first->setOsgNode(other); // on no agent: only stored
    EXPECT_EQ(other->getNumParents(), 0u);
}

TEST(Hooks, WhatTheyThrowIsLoggedAndStopsNobody) {
    LogCapture log;
    Journal journal;
    AgentNode root("root");
    AgentNode* const a = root.addChild("a");
    RecordingComponent* const first = listen(&root, journal);
    listen(a, journal)->actions["update"] = [&] {
        a->markForRemoval();
        throw 5;
    };
    listen(root.addChild("b"), journal);
    for (const char* const hook : {"update", "onCollision", "setAgentNode", "attached"})
        first->actions[hook] = [] { throw std::runtime_error("no such wheel"); };
    EXPECT_EQ(send(root, journal), "root.update a.update b.update a.deleted") << "the marked one goes last";
    listen(&root, journal, Events{})->actions["onCollision"] = [&] { root.removeComponent(first); };
    CollisionData collision;
    root.onCollision(collision);
    EXPECT_EQ(take(journal), "root.onCollision root.onCollision root.setAgentNode null") << "the agent alone hears";
    EXPECT_EQ(root.addComponent(first), first);
    struct Unseen : RecordingComponent {
        osg::Node* getOsgNode() override { throw 6; }
    };
    AgentNode().addComponent(new Unseen); // asked when it comes and when its agent goes
    const std::string wheel = ": no such wheel", start = "The hook ", end = " let out an exception";
    EXPECT_THAT(log.takeErrors(),
                ElementsAre(start + "update" + end + wheel, start + "update" + end, start + "onCollision" + end + wheel,
                            start + "setAgentNode" + end + wheel, start + "attached" + end + wheel,
                            start + "getOsgNode" + end, start + "getOsgNode" + end));
}

} // namespace
} // namespace tessarin::agent
