#pragma once

namespace tessarin::agent {
class AgentNode;
}
namespace tessarin::dynamics {
class DynamicsBody;
}
namespace tessarin::dynamics::bullet {
class BulletBodyControl;
}

namespace tessarin::viewer {

/// The body of an agent, which may be null; null if it has none at present.
dynamics::DynamicsBody* findBody(agent::AgentNode* agent);

/// What pulls and pushes need of it; null if there is no body, or one of another engine.
dynamics::bullet::BulletBodyControl* findBodyControl(agent::AgentNode* agent);

/// How fast what falls in the simulation's world gets faster, in lengths per second squared; 0 in a world of another
/// engine, or where there is none.
double gravityStrength();

} // namespace tessarin::viewer
