#include <tests/agent/AgentTest.h>

#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <tests/doubles/PhysicsDoubles.h>

namespace tessarin::agent {
namespace {

using doubles::BodyDouble;
using doubles::JointDouble;

BodyDouble* giveBody(AgentNode& node) {
    auto* const component = new RigidBodyComponent;
    auto* const body = new BodyDouble;
    component->setBody(body);
    node.addComponent(component);
    return body;
}

TEST(RigidBodyComponent, OwnsItsBodyAndTheLastOneOnTheAgentCounts) {
    AgentNode node;
    auto* const first = static_cast<RigidBodyComponent*>(node.addComponent("RigidBodyComponent"));
    auto* const second = static_cast<RigidBodyComponent*>(node.addComponent("RigidBodyComponent"));
    auto* const body = new BodyDouble;
    node.magicMove(vec(1, 0, 0)); // bodies may be missing
    node.sendEvent(AgentEvent::UPDATE);
    for (int i = 0; i < 2; ++i)
        second->setBody(body); // the same one stays
    EXPECT_EQ(body->userData, static_cast<dynamics::DynamicsUserData*>(second));
    second->setBody(new BodyDouble);
    EXPECT_EQ(BodyDouble::alive, 1);
    EXPECT_EQ(node.getRigidBody(), second);
    node.removeComponent(second);
    second->update(); // without an agent
    EXPECT_EQ(node.getRigidBody(), first);
    node.addComponent(second);
    node.addComponent(second);
    delete first;
    EXPECT_EQ(node.getRigidBody(), second);
    delete static_cast<dynamics::DynamicsUserData*>(second);
    EXPECT_EQ(node.getRigidBody(), nullptr);
    EXPECT_EQ(BodyDouble::alive, 0);
}

TEST(RigidBodyComponent, TheBodyLeadsWhileItIsActive) {
    AgentNode root;
    root.setPosition(vec(9, 9, 9));
    AgentNode& node = *root.addChild("node");
    BodyDouble* const body = giveBody(node);
    body->setPosition(vec(1, 2, 3));
    for (const bool active : {false, true}) {
        body->active = active;
        body->calls.clear();
        node.setPosition(vec(5, 5, 5));
        root.sendEvent(AgentEvent::POST_UPDATE);
        root.sendEvent(AgentEvent::UPDATE);
        EXPECT_EQ(take(body->calls), active ? "getMatrix" : "");
        EXPECT_TRUE(node.getPosition() == (active ? vec(1, 2, 3) : vec(5, 5, 5)));
    }
}

TEST(MagicMove, MovesTheBodiesOfTheBranch) {
    AgentNode root;
    AgentNode* const child = root.addChild("child");
    BodyDouble* const body = giveBody(*child);
    BodyDouble* const deep = giveBody(*child->addChild("deep"));
    BodyDouble* const aside = giveBody(*root.addChild("aside"));
    deep->pose[1][3] = 5;
    for (int i = 0; i < 2; ++i)
        child->magicMove(vec(1, 0, -2));
    const std::string rest = " setLinearVelocity(0,0,0) setAngularVelocity(0,0,0)";
    EXPECT_EQ(take(deep->calls),
              "getMatrix prepareMove setPosition(1,5,-2)" + rest + " getMatrix prepareMove setPosition(2,5,-4)" + rest);
    EXPECT_EQ(body->calls.size(), 10u);
    EXPECT_THAT(aside->calls, IsEmpty());
    EXPECT_TRUE(child->getPosition() == vec(0, 0, 0)) << "agents follow at the next update";
    root.addComponent("RigidBodyComponent");
    EXPECT_THAT(root.getDynamicsBodies(), testing::UnorderedElementsAre(nullptr, body, deep, aside));
}

TEST(JointComponent, OwnsTheJointAndGivesItAsWhatItIs) {
    AgentNode root;
    auto* const component = static_cast<JointComponent*>(root.addChild("child")->addComponent("JointComponent"));
    const auto kind = [&](dynamics::DynamicsJoint* joint) {
        for (int i = 0; i < 2; ++i)
            component->setJoint(joint); // the same one stays
        EXPECT_THAT(root.getDynamicsJoints(), ElementsAre(joint));
        std::string names = component->getD6Joint() ? "six" : "";
        names += component->getRevoluteJoint() ? "revolute" : "";
        return names += component->getPrismaticJoint() ? "prismatic" : "";
    };
    EXPECT_EQ(kind(new JointDouble<dynamics::DynamicsD6Joint>), "six");
    EXPECT_EQ(kind(new JointDouble<dynamics::DynamicsRevoluteJoint>), "revolute");
    EXPECT_EQ(kind(new JointDouble<dynamics::DynamicsPrismaticJoint>), "prismatic");
    EXPECT_EQ(kind(new JointDouble<dynamics::DynamicsJoint>), "");
    EXPECT_EQ(JointDouble<dynamics::DynamicsD6Joint>::alive, 0);
    component->setJoint(nullptr);
    EXPECT_TRUE(JointDouble<dynamics::DynamicsJoint>::alive == 0 && !component->getD6Joint());
}

} // namespace
} // namespace tessarin::agent
