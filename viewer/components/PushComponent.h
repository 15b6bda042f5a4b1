#pragma once

#include <agent/Component.h>
#include <agent/KeepsLookUps.h>

namespace tessarin::viewer {

/// Lets a person push its agent's body with the virtual inputs "push right", "push away" and "push up", as seen from
/// where the person looks, after a click has selected it. Another click elsewhere selects another agent.
///
/// Fields: `strength`, the push at full deflection against the weight of the body, 1.5 unless it is given; where there
/// is no gravity, against an acceleration of 10.
class PushComponent : public agent::Component, public agent::KeepsLookUps {
public:
    const char* getClassName() override { return "PushComponent"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) override;
    void prePhysicsTick() override;
    agent::AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;

private:
    struct Fields {
        double strength = 1.5;
    };

    Fields fields;
};

} // namespace tessarin::viewer
