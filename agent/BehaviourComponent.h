#pragma once

#include <agent/Component.h>
#include <agent/Export.h>

namespace tessarin::agent {

/// The base of a host's behaviour: a class that overrides getClassName and update and gets update called once a frame.
///
/// To outsiders a behaviour is no Component, so that they meet it only through the agent that runs it; its own class
/// sees all of Component, and asComponent() is the way to attach it:
/// @code
/// class Spinner : public BehaviourComponent {
///     const char* getClassName() override { return "Spinner"; }
///     void update() override { ... getAgentNode()->setRotation(...); }
/// };
/// agent->addComponent((new Spinner)->asComponent());
/// @endcode
/// Registered with SimObjectDB, by a SimObjectFactoryFor or a factory of its own, a behaviour is made by name like
/// every other component. It is connected to all events unless it overrides getSupportedEvents.
class TESSARIN_AGENT_EXPORT BehaviourComponent : protected Component {
public:
    ~BehaviourComponent() override;
    BehaviourComponent(const BehaviourComponent&) = default;
    BehaviourComponent& operator=(const BehaviourComponent&) = default;

    /// The behaviour as what an agent attaches.
    Component* asComponent() { return this; }

    void update() override = 0;

protected:
    BehaviourComponent() = default;
};

} // namespace tessarin::agent
