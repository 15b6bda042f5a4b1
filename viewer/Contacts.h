#pragma once

namespace tessarin::dynamics::bullet {
class BulletDynamicsWorld;
}

namespace tessarin::viewer {

/// Calls AgentNode::onCollision of both agents of each pair of bodies that touched during the world's last step. A body
/// without an agent is passed over, and reads as null on the other side.
///
/// The hooks may delete bodies, agents and components. They may not step the world or end it.
void sendCollisions(const dynamics::bullet::BulletDynamicsWorld& world);

} // namespace tessarin::viewer
