#pragma once

#include <agent/Component.h>
#include <agent/KeepsLookUps.h>

#include <gmtl/Vec.h>

namespace tessarin::viewer {

/// Tints its agent while the cursor is over it: from mouseEnter to mouseExit.
///
/// Mouse events reach the whole branch of the agent that the cursor is over; this looks whether its own agent is meant.
///
/// Fields: `colour`, red, green and blue from 0 to 1, and `strength`, from 0 to 1.
class HighlightComponent : public agent::Component, public agent::KeepsLookUps {
public:
    HighlightComponent() = default;
    HighlightComponent(const HighlightComponent&) = default;
    HighlightComponent& operator=(const HighlightComponent&) = default;
    ~HighlightComponent() override;

    const char* getClassName() override { return "HighlightComponent"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) override;
    void setAgentNode(agent::AgentNode* node) override;
    void mouseEnter() override;
    void mouseExit() override;
    agent::AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;

private:
    struct Fields {
        gmtl::Vec<double, 3> colour = {0.2, 0.8, 1};
        double strength = 0.55;
    };

    void tint(double strength);

    Fields fields;
};

} // namespace tessarin::viewer
