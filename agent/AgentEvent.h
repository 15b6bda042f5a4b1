#pragma once

namespace tessarin::agent {

/// The agent events. Each value names one hook of Component and one signal of AgentNode.
///
/// A host sends the first six with AgentNode::sendEvent on its root agent, in the order of their values: the two tick
/// events around each fixed step of the physics, the other four once a frame. The rest is sent by the library.
struct AgentEvent {
    enum _AgentEventEnum {
        PRE_PHYSICS_UPDATE = 0,  ///< Component::prePhysicsUpdate: before the frame's physics steps
        PRE_PHYSICS_TICK = 1,    ///< Component::prePhysicsTick: before each physics step
        POST_PHYSICS_TICK = 2,   ///< Component::postPhysicsTick: after each physics step
        POST_PHYSICS_UPDATE = 3, ///< Component::postPhysicsUpdate: after the frame's physics steps
        UPDATE = 4,              ///< Component::update: bodies hand their poses to their agents here
        POST_UPDATE = 5,         ///< Component::postUpdate: all agents stand where this frame shows them
        MOUSE_PRESS = 6,         ///< Component::mousePress: to the agent under the cursor
        MOUSE_RELEASE = 7,       ///< Component::mouseRelease: to the agent under the cursor
        MOUSE_DRAG = 8,          ///< Component::mouseDrag: to the agent under the cursor
        MOUSE_ENTER = 9,         ///< Component::mouseEnter: to an agent newly under the cursor
        MOUSE_OVER = 10,         ///< Component::mouseOver: to the agent under the cursor, at each frame
        MOUSE_EXIT = 11,         ///< Component::mouseExit: to the agent that the cursor left
        WINDOW_RESIZE = 12,      ///< Component::windowResize: to the root agent
        RESERVED = 13,           ///< no hook; sending it reaches nobody
        AGENT_CREATED = 14,      ///< Component::onAgentCreated: after an agent was made from a document
        AGENT_MODIFIED = 15      ///< Component::onAgentModified: after a document was applied to an agent
    };

    /// How many events there are.
    static constexpr int COUNT = 16;
};

} // namespace tessarin::agent
