#include <viewer/Contacts.h>

#include <agent/AgentNode.h>
#include <agent/CollisionData.h>
#include <agent/RigidBodyComponent.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <gmtl/VecOps.h>

#include <cstddef>

namespace tessarin::viewer {

namespace {

agent::AgentNode* agentOf(dynamics::DynamicsUserData* data) {
    auto* const component = dynamic_cast<agent::RigidBodyComponent*>(data);
    return component ? component->getAgentNode() : nullptr;
}

} // namespace

void sendCollisions(const dynamics::bullet::BulletDynamicsWorld& world) {
    const std::vector<dynamics::bullet::BulletContact>& contacts = world.getContacts();
    for (std::size_t i = 0; i < contacts.size(); ++i) {
        // A copy: the first agent's hooks may end what the entry is about.
        const dynamics::bullet::BulletContact contact = contacts[i];
        const agent::AgentNodeHandle first = agentOf(contact.firstUserData);
        const agent::AgentNodeHandle second = agentOf(contact.secondUserData);
        if (first) {
            agent::CollisionData data{second, contact.point, contact.normal, contact.impulse};
            first->onCollision(data);
        }
        if (second) {
            agent::CollisionData data{first, contact.point, contact.normal * -1.0, contact.impulse};
            second->onCollision(data);
        }
    }
}

} // namespace tessarin::viewer
