#pragma once

#include <agent/BehaviourComponent.h>
#include <agent/KeepsLookUps.h>

#include <gmtl/Vec.h>

namespace tessarin::viewer {

/// Turns its agent about an axis of its own at a steady rate. For agents without a body: a body would put its pose over
/// it.
///
/// Fields: `degreesPerSecond`, and `axis` in the agent's frame, 0 0 1 unless it is given.
class SpinBehaviour : public agent::BehaviourComponent, public agent::KeepsLookUps {
public:
    const char* getClassName() override { return "SpinBehaviour"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) override;
    void prePhysicsUpdate() override;
    void update() override {}
    agent::AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;

private:
    struct Fields {
        double degreesPerSecond = 0;
        gmtl::Vec<double, 3> axis = {0, 0, 1};
    };

    Fields fields;
};

} // namespace tessarin::viewer
