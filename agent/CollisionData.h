#pragma once

#include <agent/Forward.h>

#include <gmtl/Vec.h>

namespace tessarin::agent {

/// What AgentNode::onCollision tells its components: one contact of one of the agent's bodies.
///
/// Whoever detects contacts fills it in, once for each of the two agents, and it is valid during the call only. The
/// library passes it on unread.
struct CollisionData {
    /// The agent on the other side; null if the other body has no agent.
    AgentNode* other = nullptr;

    /// Where the bodies touch, in the world's frame and units.
    gmtl::Vec<double, 3> point;

    /// Unit vector in the world's frame, from the other body towards this agent's.
    gmtl::Vec<double, 3> normal;

    /// How hard they touched: newton seconds along the normal in the last physics step, 0 or more.
    double impulse = 0.0;
};

} // namespace tessarin::agent
