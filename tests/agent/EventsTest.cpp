#include "AgentTest.h"

#include <agent/CollisionData.h>
#include <agent/GeometryComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SceneGraphModifierComponent.h>

#include <stdexcept>

namespace tessarin::agent {
namespace {

TEST(AddComponent, GoesStepByStep) {
    LogCapture log;
    Journal journal;
    AgentNode node("node");
    auto* const component = new RecordingComponent(&journal, {}, std::nullopt);
    component->osgNode = new osg::Node;
    const auto state = [&](const char* step) {
        component->actions[step] = [&, step] {
            journal.push_back(std::string(step) + ": " + std::to_string(entriesIn(node, component->osgNode)) +
                              std::to_string(componentsOf(node).size()) + std::to_string(log.take().size()));
        };
    };
    state("setAgentNode");
    state("getSupportedEvents");
    state("attached");
    EXPECT_EQ(node.addComponent(component), component);
    EXPECT_THAT(journal, ElementsAre("setAgentNode", "setAgentNode: 000", "getSupportedEvents",
                                     "getSupportedEvents: 110", "attached", "attached: 111"));
    EXPECT_EQ(component->getAgentNode(), &node);

    component->actions.clear();
    journal.clear();
    node.removeComponent(component);
    EXPECT_THAT(journal, ElementsAre("setAgentNode null"));
    EXPECT_EQ(entriesIn(node, component->osgNode), 0);
    node.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("setAgentNode null"));
    EXPECT_EQ(component->getAgentNode(), nullptr);
    node.addComponent(component); // and it can come back
    node.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(journal.back(), "update");
    EXPECT_EQ(node.addComponent(static_cast<Component*>(nullptr)), nullptr);
    EXPECT_EQ(componentsOf(node).size(), 1u);
}

TEST(AddComponent, WhoLeavesTheEventsOpenHearsAllOfThem) {
    LogCapture log;
    Journal journal;
    AgentNode node;
    listen(&node, journal, std::nullopt);
    EXPECT_THAT(log.take(), ElementsAre("600 Component RecordingComponent does not implement getSupportedEvents."));
    for (int event = 0; event < AgentEvent::COUNT; ++event)
        node.sendEvent(static_cast<AgentEvent::_AgentEventEnum>(event));
    EXPECT_THAT(journal, ElementsAre("prePhysicsUpdate", "prePhysicsTick", "postPhysicsTick", "postPhysicsUpdate",
                                     "update", "postUpdate", "mousePress", "mouseRelease", "mouseDrag", "mouseEnter",
                                     "mouseOver", "mouseExit", "windowResize", "onAgentCreated", "onAgentModified"));
    journal.clear();
    listen(&node, journal, Events{});
    listen(&node, journal, Events{AgentEvent::MOUSE_OVER, AgentEvent::RESERVED, AgentEvent::MOUSE_OVER});
    EXPECT_THAT(log.take(), IsEmpty());
    node.sendEvent(AgentEvent::RESERVED);
    node.sendEvent(AgentEvent::MOUSE_OVER);
    EXPECT_THAT(journal, ElementsAre("mouseOver", "mouseOver", "mouseOver"));

    node.addComponent("SceneGraphModifierComponent");
    EXPECT_THAT(log.take(),
                ElementsAre("600 Component SceneGraphModifierComponent does not implement getSupportedEvents."));
}

TEST(AddComponent, ByNameFindsOrMakes) {
    AgentNode node;
    Component* const body = node.getOrAddComponent("RigidBodyComponent");
    EXPECT_EQ(node.getOrAddComponent("RigidBodyComponent"), body);
    EXPECT_EQ(body->getName(), "RigidBodyComponent");
    Component* const named = node.getOrAddComponent("JointComponent", "hinge");
    EXPECT_STREQ(named->getClassName(), "JointComponent");
    EXPECT_EQ(named->getName(), "hinge");
    EXPECT_EQ(node.getOrAddComponent("GeometryComponent", "hinge"), named);
    EXPECT_EQ(node.getOrAddComponent("hinge"), named);
    EXPECT_EQ(node.getComponent("JointComponent"), nullptr);
    EXPECT_THAT(componentsOf(node), ElementsAre(body, named));
}

TEST(SendEvent, RunsDepthFirstFromItsAgentDown) {
    Journal journal;
    AgentNode root("root");
    AgentNode* const a = root.addChild("a");
    for (AgentNode* const node : {&root, a, a->addChild("a1"), root.addChild("b")})
        for (int i = 0; i < 2; ++i)
            listen(node, journal);
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("root.update", "root.update", "a.update", "a.update", "a1.update", "a1.update",
                                     "b.update", "b.update"));
    journal.clear();
    a->sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("a.update", "a.update", "a1.update", "a1.update"));
}

TEST(SendEvent, AMarkedChildHearsTheEventAndGoesAfterItsSiblings) {
    Journal journal;
    AgentNode root("root");
    RecordingComponent* const first = listen(root.addChild("a"), journal);
    listen(root.addChild("b"), journal);
    first->actions["update"] = [&] { first->getAgentNode()->markForRemoval(); };
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("a.update", "b.update", "a.deleted"));
}

TEST(Attachment, TwiceIsHeardTwiceAndRemovedAtOnce) {
    Journal journal;
    AgentNode root("root");
    AgentNode other("other");
    const auto component = std::make_unique<RecordingComponent>(&journal);
    component->osgNode = new osg::Node;
    root.addComponent(component.get());
    root.addComponent(component.get());
    other.addComponent(component.get());
    EXPECT_EQ(componentsOf(root).size(), 2u);
    journal.clear();
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("update", "update"));
    root.removeComponent(component.get());
    EXPECT_THAT(componentsOf(root), IsEmpty());
    EXPECT_EQ(entriesIn(root, component->osgNode), 0);
    other.removeComponent(component.get());
    journal.clear();
    other.sendEvent(AgentEvent::UPDATE);
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, IsEmpty());
}

TEST(Attachment, OnTwoAgentsIsDeletedOnce) {
    const auto before = RecordingComponent::alive;
    Journal journal;
    AgentNode root("root");
    {
        AgentNode other("other");
        RecordingComponent* const shared = listen(&other, journal);
        shared->osgNode = new osg::Node;
        root.addComponent(shared);
        root.addComponent(shared);
        EXPECT_EQ(root.getOsgTransform()->getNumChildren(), 2u);
    }
    EXPECT_EQ(RecordingComponent::alive, before);
    EXPECT_THAT(componentsOf(root), IsEmpty());
    EXPECT_EQ(root.getOsgTransform()->getNumChildren(), 0u);
    journal.clear();
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, IsEmpty());
}

// Two geometries of one agent both take the whole model where it has no node of the agent's name.
TEST(Attachment, ComponentsThatShareASceneNodeLoseOnlyTheirOwnEntry) {
    AgentNode node;
    const osg::ref_ptr<osg::Node> shared = new osg::Node;
    auto* const first = new GeometryComponent(shared);
    auto* const second = new GeometryComponent(shared);
    node.addComponent(first);
    node.addComponent(second);
    EXPECT_EQ(entriesIn(node, shared), 2);
    first->setOsgNode(shared);
    EXPECT_EQ(entriesIn(node, shared), 2);
    first->setOsgNode(nullptr);
    EXPECT_EQ(entriesIn(node, shared), 1);
    first->setOsgNode(shared);
    node.removeComponent(first);
    delete first;
    EXPECT_EQ(entriesIn(node, shared), 1);
}

TEST(OnCollision, ReachesEveryComponentOfTheAgentAlone) {
    LogCapture log;
    Journal journal;
    AgentNode root("root");
    RecordingComponent* const first = listen(&root, journal, Events{});
    RecordingComponent* const second = listen(&root, journal, Events{});
    listen(&root, journal);
    listen(root.addChild("child"), journal);
    CollisionData collision;
    root.onCollision(collision);
    EXPECT_THAT(journal, ElementsAre("root.onCollision", "root.onCollision", "root.onCollision"));
    journal.clear();
    first->actions["onCollision"] = [&] {
        root.removeComponent(second);
        delete second;
        throw std::runtime_error("ouch");
    };
    root.onCollision(collision);
    EXPECT_THAT(journal, ElementsAre("root.onCollision", "root.setAgentNode null", "root.deleted", "root.onCollision"));
}

TEST(Hooks, WhatTheyThrowIsLoggedAndStopsNobody) {
    LogCapture log;
    Journal journal;
    AgentNode root("root");
    RecordingComponent* const first = listen(&root, journal);
    RecordingComponent* const second = listen(root.addChild("a"), journal);
    listen(root.addChild("b"), journal);
    first->actions["update"] = [] { throw std::runtime_error("no such wheel"); };
    second->actions["update"] = [&] {
        second->getAgentNode()->markForRemoval();
        throw 5;
    };
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("root.update", "a.update", "b.update", "a.deleted"));
    EXPECT_THAT(log.takeErrors(), ElementsAre("The hook update let out an exception: no such wheel",
                                              "The hook update let out an exception"));
    auto* const third = new RecordingComponent;
    third->actions["attached"] = [] { throw std::runtime_error("not here"); };
    EXPECT_EQ(root.addComponent(third), third);
    EXPECT_THAT(log.takeErrors(), ElementsAre("The hook attached let out an exception: not here"));
    root.sendEvent(AgentEvent::MOUSE_DRAG); // nothing is left in the state of an event
    AgentNode* const marked = root.addChild("marked");
    marked->markForRemoval();
    root.sendEvent(AgentEvent::MOUSE_DRAG);
    EXPECT_EQ(root.getChild("marked"), nullptr);
}

} // namespace
} // namespace tessarin::agent
