#pragma once

#include <agent/BehaviourComponent.h>
#include <agent/KeepsLookUps.h>

#include <string>

namespace tessarin::dynamics::bullet {
class BulletJoint;
}

namespace tessarin::viewer {

/// Drives one axis of a joint by a virtual input: a wheel, the turntable of a crane, the steering of a car.
///
/// The joint is the one of that name on its own agent or on the nearest one above; as long as there is none, and for
/// an input that nobody has defined, nothing moves. An axis or a mode that isn't one is told once at level 300, and the
/// joint left alone.
///
/// | field | default | meaning |
/// |---|---|---|
/// | `joint`, `input` | empty | their names |
/// | `axis` | empty | translationX to rotationZ; empty is the joint's main axis |
/// | `mode` | speed | `speed`: the input says how fast; `position`: it says where to |
/// | `speed` | 1 | at full input, radians or lengths per second; for positions, the most on the way there |
/// | `range` | 1 | the position at full input, radians or a length; a negative one turns the input round |
/// | `force` | 0 | the most that the motor pushes or turns with |
/// | `hold` | -1 | with how much it holds still at no input; less than 0: with `force` |
/// | `brake`, `brakeForce` | empty, 0 | an input that holds the axis with so much, whatever `input` says |
class MotorBehaviour : public agent::BehaviourComponent, public agent::KeepsLookUps {
public:
    const char* getClassName() override { return "MotorBehaviour"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) override;
    void prePhysicsTick() override;
    void update() override {}
    agent::AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;

private:
    struct Fields {
        std::string joint;
        std::string input;
        std::string axis;
        std::string mode = "speed";
        double speed = 1;
        double range = 1;
        double force = 0;
        double hold = -1;
        std::string brake;
        double brakeForce = 0;
    };

    dynamics::bullet::BulletJoint* findJoint();
    void drive(dynamics::bullet::BulletJoint& joint);
    void refuse(const std::string& text);

    Fields fields;
    std::string refused; // the text that was told last
};

} // namespace tessarin::viewer
