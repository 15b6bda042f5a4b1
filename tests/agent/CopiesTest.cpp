#include "AgentTest.h"

#include <agent/GeometryComponent.h>
#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SceneGraphModifierComponent.h>
#include <tests/doubles/PhysicsDoubles.h>

namespace tessarin::agent {
namespace {

using doubles::BodyDouble;
using Joint = doubles::JointDouble<dynamics::DynamicsJoint>;

TEST(AgentCopy, SeesWhatItsSourceHolds) {
    Journal journal;
    AgentNode parent("parent");
    AgentNode* const source = parent.addChild("source");
    listen(source->addChild("child"), journal);
    RecordingComponent* const component = listen(source, journal);
    auto* const body = new RigidBodyComponent;
    source->addComponent(body);
    source->setSelectionPriority(7);
    source->setVelocity({1.0f, 2.0f, 3.0f});
    {
        AgentNode copy(*source);
        EXPECT_EQ(copy.getName(), "source");
        EXPECT_EQ(copy.getParent(), &parent);
        EXPECT_EQ(copy.getOsgTransform(), source->getOsgTransform());
        EXPECT_EQ(copy.getSelectionPriority(), 7);
        EXPECT_EQ(copy.getVelocity()[2], 3.0f);
        EXPECT_EQ(copy.getRigidBody(), body);
        EXPECT_THAT(componentsOf(copy), ElementsAre(component, body));
        EXPECT_THAT(childNames(copy), ElementsAre("child"));
        EXPECT_EQ(AgentNode::getAgentNode(copy.getOsgTransform()), source);
        EXPECT_THAT(childNames(parent), ElementsAre("source"));
        copy.setName("copy");
        EXPECT_EQ(AgentNode::getAgentNode("copy"), nullptr);

        listen(&copy, journal, Events{AgentEvent::MOUSE_OVER}); // connected to the signals that both have
        source->sendEvent(AgentEvent::MOUSE_OVER);
        EXPECT_THAT(journal, ElementsAre("copy.mouseOver"));
        journal.clear();
        copy.sendEvent(AgentEvent::UPDATE);
        copy.getChildren().front()->markForRemoval();
        copy.sendEvent(AgentEvent::POST_UPDATE); // not the copy's to delete
        EXPECT_THAT(journal, ElementsAre("source.update", "child.update"));
        listen(source, journal);
        journal.clear();
        copy.sendEvent(AgentEvent::UPDATE);
        EXPECT_THAT(journal, ElementsAre("source.update", "source.update", "child.update"));
        source->removeComponent(body);
        delete body;
        EXPECT_EQ(copy.getRigidBody(), nullptr);
        journal.clear();
    }
    EXPECT_THAT(journal, ElementsAre("copy.deleted"));
    journal.clear();
    EXPECT_EQ(source->getOsgTransform()->getNumParents(), 1u);
    EXPECT_EQ(childNames(*source).size(), 1u);
    parent.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("source.update", "source.update", "child.update", "child.deleted"));
}

TEST(AgentCopy, OutlivesItsSourceEmpty) {
    Journal journal;
    auto source = std::make_unique<AgentNode>("source");
    listen(source->addChild("child"), journal);
    listen(source.get(), journal);
    AgentNode copy(*source);
    AgentNode second(copy);
    second.addChild("own");
    AgentNode* const taken = source->addChild("taken");
    listen(taken, journal);
    {
        AgentNode third(*source);
        third.addChild(taken); // from now on it owns what it has only seen
        source->removeChild(taken);
    }
    EXPECT_THAT(journal, ElementsAre("taken.deleted"));
    journal.clear();
    RecordingComponent* const own = listen(&second, journal);
    source.reset();
    EXPECT_THAT(journal, ElementsAre("source.deleted", "child.deleted"));
    EXPECT_THAT(childNames(copy), IsEmpty());
    EXPECT_THAT(childNames(second), ElementsAre("own"));
    EXPECT_THAT(componentsOf(second), ElementsAre(own));
    journal.clear();
    second.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("source.update"));
    second.setPosition(vec(1, 0, 0)); // the transform is shared and lives on
    EXPECT_EQ(copy.getPosition()[0], 1.0);
    EXPECT_EQ(AgentNode::getAgentNode(copy.getOsgTransform()), nullptr);
}

TEST(AgentCopy, AssignmentLetsGoAndThenSees) {
    Journal journal;
    AgentNode source("source");
    listen(source.addChild("child"), journal);
    AgentNode target("target");
    const Owned released(target.addChild("released"));
    const std::unique_ptr<Component> component(listen(&target, journal));
    AgentNode& same = target;
    target = same;
    EXPECT_THAT(childNames(target), ElementsAre("released"));
    target = source;
    EXPECT_EQ(component->getAgentNode(), nullptr);
    EXPECT_EQ(released->getOsgTransform()->getNumParents(), 0u);
    EXPECT_THAT(componentsOf(target), IsEmpty());
    journal.clear();
    target.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("child.update"));
    EXPECT_THAT(childNames(target), ElementsAre("child"));
    source = target; // back again: nobody owns the child any more
    const Owned child(source.getChild("child"));
    EXPECT_NE(child, nullptr);

    AgentNode marked("marked");
    marked.markForRemoval();
    AgentNode parent;
    auto* const assigned = parent.addChild("assigned");
    RecordingComponent* const late = listen(parent.addChild("late"), journal);
    late->actions["update"] = [&] { *assigned = marked; };
    parent.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(childNames(parent), ElementsAre("late")) << "a mark that comes by assignment is a mark";
}

TEST(ComponentCopy, OwnsNothingOfItsSource) {
    for (const bool copyGoesFirst : {true, false}) {
        auto body = std::make_unique<RigidBodyComponent>();
        auto joint = std::make_unique<JointComponent>();
        auto* const held = new BodyDouble;
        body->setBody(held);
        joint->setJoint(new Joint);
        auto bodyCopy = std::make_unique<RigidBodyComponent>(*body);
        auto jointCopy = std::make_unique<JointComponent>();
        *jointCopy = *joint;
        EXPECT_EQ(bodyCopy->getBody(), held);
        EXPECT_EQ(jointCopy->getJoint(), joint->getJoint());
        EXPECT_EQ(held->userData, body.get());
        if (copyGoesFirst) {
            bodyCopy.reset();
            jointCopy.reset();
            EXPECT_EQ(BodyDouble::alive, 1);
            EXPECT_EQ(Joint::alive, 1);
        } else {
            body->setBody(new BodyDouble);
            joint.reset();
            EXPECT_EQ(bodyCopy->getBody(), nullptr);
            EXPECT_EQ(jointCopy->getJoint(), nullptr);
            bodyCopy->update();
            bodyCopy->setBody(new BodyDouble); // one of its own
            EXPECT_EQ(BodyDouble::alive, 2);
        }
    }
    EXPECT_EQ(BodyDouble::alive, 0);
    EXPECT_EQ(Joint::alive, 0);

    RigidBodyComponent source;
    RigidBodyComponent target;
    source.setBody(new BodyDouble);
    auto released = std::make_unique<BodyDouble>();
    target.setBody(released.get());
    target = source;
    EXPECT_EQ(target.getBody(), source.getBody());
    EXPECT_EQ(released->userData, nullptr) << "it belongs to the caller and points at nobody";
}

TEST(ComponentCopy, ForgetsAnAgentThatIsGone) {
    auto node = std::make_unique<AgentNode>("node");
    auto* const source = new GeometryComponent(new osg::Node);
    source->setName("geometry");
    node->addComponent(source);
    GeometryComponent copy(*source);
    EXPECT_EQ(copy.getName(), "geometry");
    EXPECT_EQ(copy.getAgentNode(), node.get());
    EXPECT_EQ(copy.getOsgNode(), source->getOsgNode());
    EXPECT_THAT(componentsOf(*node), ElementsAre(source));
    GeometryComponent assigned;
    assigned = *source;
    node.reset();
    EXPECT_EQ(copy.getAgentNode(), nullptr);
    copy.setOsgNode(new osg::Node);
    assigned.setOsgNode(nullptr);
}

TEST(ComponentCopy, OnAnAgentOfItsOwnLeavesTheSourceConnected) {
    Journal journal;
    AgentNode node("node");
    RecordingComponent* const source = listen(&node, journal);
    {
        AgentNode other("other");
        auto* const copy = new RecordingComponent(*source);
        other.addComponent(copy);
        delete new RecordingComponent(*source);
        journal.clear();
        other.sendEvent(AgentEvent::UPDATE);
        EXPECT_THAT(journal, ElementsAre("node.update"));
    }
    journal.clear();
    node.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(journal, ElementsAre("node.update")) << "the copy's end is none of the source's business";
}

// Components look at their agent when they end, to take themselves out of something that they share with it.
TEST(Component, MeetsItsAgentUntilItsEnd) {
    std::string seen;
    {
        AgentNode node("node");
        auto* const component = new RecordingComponent;
        node.addComponent(component);
        component->actions["deleted"] = [component, &seen] { seen = component->getAgentNode()->getName(); };
    }
    EXPECT_EQ(seen, "node");
}

TEST(ComponentCopy, OfAModifierHasTheSameWorkWaiting) {
    AgentNode root("root");
    auto* const child = new AgentNode("child");
    auto* const source = new SceneGraphModifierComponent;
    source->scheduleAddChild(&root, child);
    SceneGraphModifierComponent copy(*source);
    delete source;
    copy.update();
    copy.update();
    EXPECT_THAT(childNames(root), ElementsAre("child"));
}

} // namespace
} // namespace tessarin::agent
