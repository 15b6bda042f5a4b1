#include <viewer/components/BodyOfAgent.h>

#include <agent/AgentNode.h>
#include <agent/RigidBodyComponent.h>
#include <dynamics/DynamicsBody.h>
#include <dynamics/bullet/BulletBodyControl.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <gmtl/VecOps.h>

namespace tessarin::viewer {

dynamics::DynamicsBody* findBody(agent::AgentNode* agent) {
    agent::RigidBodyComponent* const component = agent ? agent->getRigidBody() : nullptr;
    return component ? component->getBody() : nullptr;
}

dynamics::bullet::BulletBodyControl* findBodyControl(agent::AgentNode* agent) {
    return dynamic_cast<dynamics::bullet::BulletBodyControl*>(findBody(agent));
}

double gravityStrength() {
    const auto* const world = dynamic_cast<dynamics::bullet::BulletDynamicsWorld*>(agent::AgentNode::dynamicsWorld);
    return world ? gmtl::length(world->getGravity()) : 0;
}

} // namespace tessarin::viewer
