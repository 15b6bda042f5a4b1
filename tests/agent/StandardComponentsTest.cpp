#include "AgentTest.h"

#include <agent/GeometryComponent.h>
#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SceneGraphModifierComponent.h>
#include <tests/doubles/PhysicsDoubles.h>

#include <osg/observer_ptr>

namespace tessarin::agent {
namespace {

using doubles::BodyDouble;
using doubles::JointDouble;

BodyDouble* giveBody(AgentNode& node, bool active = true) {
    auto* const component = new RigidBodyComponent;
    auto* const body = new BodyDouble("body", active);
    component->setBody(body);
    node.addComponent(component);
    return body;
}

TEST(RigidBodyComponent, OwnsItsBody) {
    {
        RigidBodyComponent component;
        Events events{AgentEvent::MOUSE_DRAG};
        EXPECT_TRUE(component.getSupportedEvents(events));
        EXPECT_THAT(events, ElementsAre(AgentEvent::MOUSE_DRAG, AgentEvent::UPDATE));
        EXPECT_EQ(component.getBody(), nullptr);
        auto* const body = new BodyDouble;
        component.setBody(body);
        component.setBody(body); // the same one stays
        EXPECT_EQ(component.getBody(), body);
        EXPECT_EQ(body->userData, static_cast<dynamics::DynamicsUserData*>(&component));
        component.setBody(new BodyDouble);
        EXPECT_EQ(BodyDouble::alive, 1);
        component.setBody(nullptr);
        EXPECT_EQ(BodyDouble::alive, 0);
        component.update();
        component.setBody(new BodyDouble);
        component.update(); // without an agent
        auto* const other = new RigidBodyComponent;
        other->setBody(new BodyDouble);
        delete static_cast<dynamics::DynamicsUserData*>(other);
    }
    EXPECT_EQ(BodyDouble::alive, 0);
}

TEST(RigidBodyComponent, TheBodyLeadsWhileItIsActive) {
    AgentNode root;
    root.setPosition(vec(9, 9, 9));
    AgentNode& node = *root.addChild("node");
    BodyDouble* const body = giveBody(node, false);
    body->setPosition(vec(1, 2, 3));
    body->calls.clear();
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(body->calls, IsEmpty());
    EXPECT_TRUE(node.getPosition() == vec(0, 0, 0));
    body->active = true;
    root.sendEvent(AgentEvent::POST_UPDATE);
    EXPECT_TRUE(node.getPosition() == vec(0, 0, 0));
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_TRUE(node.getMatrix() == body->pose);
    node.setPosition(vec(5, 5, 5));
    EXPECT_EQ(body->pose(0, 3), 1.0);
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_TRUE(node.getPosition() == vec(1, 2, 3));
    EXPECT_THAT(body->calls, ElementsAre("getMatrix", "getMatrix"));
}

TEST(RigidBodyComponent, TheLastOneStillOnTheAgentIsItsRigidBody) {
    AgentNode node;
    auto* const first = static_cast<RigidBodyComponent*>(node.addComponent("RigidBodyComponent"));
    auto* const second = static_cast<RigidBodyComponent*>(node.addComponent("RigidBodyComponent"));
    EXPECT_EQ(node.getRigidBody(), second);
    node.addComponent("JointComponent");
    node.sendEvent(AgentEvent::UPDATE); // bodies may be missing
    node.magicMove(vec(1, 0, 0));
    node.removeComponent(second);
    EXPECT_EQ(node.getRigidBody(), first);
    node.addComponent(second);
    node.addComponent(second);
    node.removeComponent(first);
    delete first;
    EXPECT_EQ(node.getRigidBody(), second);
    delete second;
    EXPECT_EQ(node.getRigidBody(), nullptr);
}

TEST(MagicMove, MovesTheBodiesOfTheBranch) {
    AgentNode root;
    AgentNode* const child = root.addChild("child");
    BodyDouble* const body = giveBody(*child);
    BodyDouble* const deep = giveBody(*child->addChild("deep"));
    BodyDouble* const aside = giveBody(*root.addChild("aside"));
    deep->setPosition(vec(0, 5, 0));
    deep->calls.clear();
    child->magicMove(vec(1, 0, -2));
    child->magicMove(vec(1, 0, -2));
    EXPECT_TRUE(child->getPosition() == vec(0, 0, 0));
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_TRUE(child->getPosition() == vec(2, 0, -4));
    EXPECT_TRUE(child->getChild("deep")->getPosition() == vec(2, 5, -4));
    EXPECT_TRUE(body->speed == (gmtl::Vec<float, 3>(0.0f, 0.0f, 0.0f)));
    EXPECT_TRUE(body->spin == (gmtl::Vec<float, 3>(0.0f, 0.0f, 0.0f)));
    deep->calls.resize(5);
    EXPECT_THAT(deep->calls,
                ElementsAre("getMatrix", "prepareMove", "setPosition", "setLinearVelocity", "setAngularVelocity"));
    EXPECT_THAT(aside->calls, ElementsAre("getMatrix"));
    EXPECT_THAT(root.getDynamicsBodies(), testing::UnorderedElementsAre(body, deep, aside));
    root.addComponent("RigidBodyComponent");
    child->addComponent("RigidBodyComponent");
    EXPECT_THAT(root.getDynamicsBodies(), testing::UnorderedElementsAre(nullptr, body, deep, aside));
    EXPECT_THAT(AgentNode().getDynamicsBodies(), IsEmpty());
}

template <class Kind>
void expectKind(bool isD6, bool isRevolute, bool isPrismatic) {
    JointComponent component;
    auto* const joint = new JointDouble<Kind>;
    component.setJoint(joint);
    component.setJoint(joint); // the same one stays
    EXPECT_EQ(component.getJoint(), joint);
    EXPECT_EQ(component.getD6Joint() != nullptr, isD6);
    EXPECT_EQ(component.getRevoluteJoint() != nullptr, isRevolute);
    EXPECT_EQ(component.getPrismaticJoint() != nullptr, isPrismatic);
    component.setJoint(new JointDouble<Kind>);
    EXPECT_EQ(JointDouble<Kind>::alive, 1);
    component.setJoint(nullptr);
    EXPECT_EQ(JointDouble<Kind>::alive, 0);
    EXPECT_EQ(component.getD6Joint(), nullptr);
}

TEST(JointComponent, GivesTheJointAsWhatItIs) {
    expectKind<dynamics::DynamicsD6Joint>(true, false, false);
    expectKind<dynamics::DynamicsRevoluteJoint>(false, true, false);
    expectKind<dynamics::DynamicsPrismaticJoint>(false, false, true);
    expectKind<dynamics::DynamicsJoint>(false, false, false);

    using Joint = JointDouble<dynamics::DynamicsRevoluteJoint>;
    {
        AgentNode root;
        auto* const upper = static_cast<JointComponent*>(root.addComponent("JointComponent"));
        auto* const lower = static_cast<JointComponent*>(root.addChild("child")->addComponent("JointComponent"));
        upper->setJoint(new Joint);
        lower->setJoint(new Joint);
        EXPECT_THAT(root.getDynamicsJoints(), testing::UnorderedElementsAre(upper->getJoint(), lower->getJoint()));
        EXPECT_THAT(root.getDynamicsBodies(), IsEmpty());
    }
    EXPECT_EQ(Joint::alive, 0);
}

TEST(GeometryComponent, KeepsItsNodeUnderItsAgent) {
    const osg::ref_ptr<osg::Node> a = new osg::Node;
    const osg::ref_ptr<osg::Node> b = new osg::Node;
    AgentNode node;
    auto* const component = new GeometryComponent(a);
    EXPECT_EQ(a->getNumParents(), 0u);
    node.addComponent(component);
    component->setOsgNode(a);
    EXPECT_EQ(entriesIn(node, a), 1);
    component->setOsgNode(b);
    EXPECT_EQ(entriesIn(node, a), 0);
    EXPECT_EQ(entriesIn(node, b), 1);
    component->setOsgNode(nullptr);
    EXPECT_EQ(component->getOsgNode(), nullptr);
    EXPECT_EQ(node.getOsgTransform()->getNumChildren(), 0u);
    component->setOsgNode(b);
    node.removeComponent(component);
    EXPECT_EQ(entriesIn(node, b), 0);
    EXPECT_EQ(component->getOsgNode(), b);
    component->setOsgNode(a); // on no agent: only stored
    EXPECT_EQ(a->getNumParents(), 0u);
    node.addComponent(component);
    EXPECT_EQ(entriesIn(node, a), 1);

    auto* const detached = new GeometryComponent(new osg::Node);
    const osg::observer_ptr<osg::Node> held = detached->getOsgNode();
    delete detached;
    EXPECT_FALSE(held.valid());
}

TEST(SceneGraphModifierComponent, CarriesOutAdditionsThenRemovals) {
    AgentNode root;
    AgentNode to("to");
    auto* const modifier = new SceneGraphModifierComponent;
    root.addComponent(modifier);
    AgentNode* const moving = root.addChild("moving");
    const Owned out(new AgentNode("out"));
    modifier->scheduleRemoveChild(&root, moving);
    modifier->scheduleAddChild(&to, moving);
    modifier->scheduleRemoveChild(&to, out.get()); // scheduled first, yet carried out last
    modifier->scheduleAddChild(&to, out.get());
    modifier->scheduleAddChild(&to, out.get());
    auto* const second = new AgentNode("second");
    modifier->scheduleAddChild(&to, second);
    root.sendEvent(AgentEvent::POST_UPDATE);
    EXPECT_THAT(childNames(to), IsEmpty());
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(childNames(to), ElementsAre("moving", "second"));
    EXPECT_THAT(childNames(root), IsEmpty());
    EXPECT_EQ(moving->getParent(), &to);
    EXPECT_EQ(to.getOsgTransform()->getNumChildren(), 2u);
    EXPECT_EQ(moving->getOsgTransform()->getNumParents(), 1u);
    modifier->update();
    EXPECT_THAT(childNames(to), ElementsAre("moving", "second"));
    modifier->scheduleAddChild(&to, second);
    modifier->update();
    EXPECT_THAT(childNames(to), ElementsAre("moving", "second", "second"));
    modifier->scheduleAddChild(&to, moving);
    root.removeComponent(modifier);
    delete modifier; // what waits is dropped
    EXPECT_EQ(to.getChildren().size(), 3u);
}

} // namespace
} // namespace tessarin::agent
