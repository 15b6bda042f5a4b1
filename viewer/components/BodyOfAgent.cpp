#include <viewer/components/BodyOfAgent.h>

#include <agent/AgentNode.h>
#include <agent/RigidBodyComponent.h>
#include <dynamics/DynamicsBody.h>
#include <dynamics/bullet/BulletBodyControl.h>

namespace tessarin::viewer {

dynamics::DynamicsBody* findBody(agent::AgentNode* agent) {
    agent::RigidBodyComponent* const component = agent ? agent->getRigidBody() : nullptr;
    return component ? component->getBody() : nullptr;
}

dynamics::bullet::BulletBodyControl* findBodyControl(agent::AgentNode* agent) {
    return dynamic_cast<dynamics::bullet::BulletBodyControl*>(findBody(agent));
}

} // namespace tessarin::viewer
