#pragma once

#include <agent/Component.h>
#include <agent/KeepsLookUps.h>

#include <gmtl/Vec.h>

namespace tessarin::viewer {

/// Lets its agent flash up when its body is hit, and the flash fade out.
///
/// A hit is a push that stands out from what the body bears in the steps before and after, so a body that rests doesn't
/// flash, under however large a load. It shows one step late. A hit of five times the threshold flashes brightest.
///
/// Fields: `threshold`, the least change of speed that counts as a hit (the push divided by the body's mass); as long
/// as it is 0, what a fall of a fifth of a second gives. `seconds`, how long the brightest flash lasts, 0.5 at first.
/// `colour`, red, green and blue from 0 to 1.
class FlashComponent : public agent::Component, public agent::KeepsLookUps {
public:
    FlashComponent() = default;
    FlashComponent(const FlashComponent&) = default;
    FlashComponent& operator=(const FlashComponent&) = default;
    ~FlashComponent() override;

    const char* getClassName() override { return "FlashComponent"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) override;
    void setAgentNode(agent::AgentNode* node) override;
    void onCollision(agent::CollisionData& collision) override;
    void prePhysicsTick() override;
    agent::AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;

private:
    struct Fields {
        double threshold = 0;
        double seconds = 0.5;
        gmtl::Vec<float, 3> colour = {1.0f, 0.92f, 0.55f};
    };

    double brightnessOf(double push);
    void show(double strength);

    Fields fields;
    double pushed = 0; // in the last step so far
    double pushedBefore = 0;
    double pushedEarlier = 0;
    double brightness = 0;
};

} // namespace tessarin::viewer
