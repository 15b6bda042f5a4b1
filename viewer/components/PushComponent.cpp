#include <viewer/components/PushComponent.h>

#include <viewer/Hand.h>
#include <viewer/SimulationTime.h>
#include <viewer/components/BodyOfAgent.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>
#include <agent/Input.h>
#include <dynamics/bullet/BulletBodyControl.h>

#include <cstddef>

namespace tessarin::viewer {

using agent::AgentEvent;

namespace {

/// The weight of a body of mass 1, or something like it where nothing has weight.
double weightOfOne() {
    constexpr double withoutGravity = 10;
    const double gravity = gravityStrength();
    return gravity > 0 ? gravity : withoutGravity;
}

} // namespace

bool PushComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) {
    events.push_back(AgentEvent::PRE_PHYSICS_TICK);
    return true;
}

void PushComponent::prePhysicsTick() {
    const Hand& hand = Hand::instance();
    if (hand.getSelected() != getAgentNode())
        return;
    dynamics::bullet::BulletBodyControl* const control = findBodyControl(getAgentNode());
    const osg::Vec3d direction = hand.getRight() * input()->getAxis("push right") +
                                 hand.getAway() * input()->getAxis("push away") +
                                 hand.getUp() * input()->getAxis("push up");
    if (!control || direction.length2() == 0)
        return;
    const osg::Vec3d push = direction * (fields.strength * weightOfOne() * control->getMass() * SimulationTime::tick);
    control->applyImpulse({push.x(), push.y(), push.z()}, control->getCentreOfMass());
}

agent::AccessorWithObject PushComponent::getAccessor(const std::string& fieldName) {
    static agent::Accessor<double> strength(offsetof(Fields, strength));
    if (fieldName == "strength")
        return {&strength, &fields};
    return Component::getAccessor(fieldName);
}

void PushComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
    names.emplace_back("strength");
}

} // namespace tessarin::viewer
