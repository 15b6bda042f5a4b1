#include <viewer/components/MotorBehaviour.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>
#include <agent/Input.h>
#include <agent/JointComponent.h>
#include <dynamics/bullet/BulletJoint.h>
#include <logging/Log.h>
#include <logging/Logger.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace tessarin::viewer {

using dynamics::bullet::BulletJoint;
using dynamics::bullet::JointAxis;

namespace {

std::optional<JointAxis> axisOf(const BulletJoint& joint, std::string_view text) {
    if (text.empty())
        return joint.getMainAxis();
    constexpr std::pair<std::string_view, JointAxis> axes[] = {
        {"translationX", JointAxis::translationX}, {"translationY", JointAxis::translationY},
        {"translationZ", JointAxis::translationZ}, {"rotationX", JointAxis::rotationX},
        {"rotationY", JointAxis::rotationY},       {"rotationZ", JointAxis::rotationZ}};
    for (const auto& [name, axis] : axes)
        if (name == text)
            return axis;
    return std::nullopt;
}

} // namespace

bool MotorBehaviour::getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) {
    events.push_back(agent::AgentEvent::PRE_PHYSICS_TICK);
    return true;
}

void MotorBehaviour::prePhysicsTick() {
    // Sought anew each time: the joint may have gone.
    if (BulletJoint* const joint = findJoint())
        drive(*joint);
}

BulletJoint* MotorBehaviour::findJoint() {
    for (agent::AgentNode* holder = getAgentNode(); holder; holder = holder->getParent())
        if (auto* const component = dynamic_cast<agent::JointComponent*>(holder->getComponent(fields.joint)))
            return dynamic_cast<BulletJoint*>(component->getJoint());
    return nullptr;
}

void MotorBehaviour::drive(BulletJoint& joint) {
    const std::optional<JointAxis> named = axisOf(joint, fields.axis);
    if (!named || (fields.mode != "speed" && fields.mode != "position")) {
        refuse(named ? fields.mode : fields.axis);
        return;
    }
    const JointAxis axis = *named;
    const double value = std::clamp(double{input()->getAxis(fields.input)}, -1.0, 1.0);
    if (fields.mode == "position")
        joint.setMotorPosition(axis, value * fields.range, fields.speed, fields.force);
    else if (input()->getAxis(fields.brake) > 0)
        joint.setMotorVelocity(axis, 0, fields.brakeForce);
    else if (value == 0 && fields.hold >= 0)
        joint.setMotorVelocity(axis, 0, fields.hold);
    else
        joint.setMotorVelocity(axis, value * fields.speed, fields.force);
}

void MotorBehaviour::refuse(const std::string& text) {
    if (text == refused)
        return;
    refused = text;
    TESSARIN_LOG(logging::Logger::instance()->getCategory("viewer", true), logging::Logger::errorLevel,
                 "MotorBehaviour of " << getAgentNode()->getName() << ": no axis or mode is called " << text);
}

agent::AccessorWithObject MotorBehaviour::getAccessor(const std::string& fieldName) {
    using Text = agent::Accessor<std::string>;
    using Number = agent::Accessor<double>;
    static Text joint(offsetof(Fields, joint));
    static Text input(offsetof(Fields, input));
    static Text axis(offsetof(Fields, axis));
    static Text mode(offsetof(Fields, mode));
    static Number speed(offsetof(Fields, speed));
    static Number range(offsetof(Fields, range));
    static Number force(offsetof(Fields, force));
    static Number hold(offsetof(Fields, hold));
    static Text brake(offsetof(Fields, brake));
    static Number brakeForce(offsetof(Fields, brakeForce));
    static const std::pair<const char*, agent::AbstractAccessor*> table[] = {
        {"joint", &joint}, {"input", &input}, {"axis", &axis}, {"mode", &mode},   {"speed", &speed},
        {"range", &range}, {"force", &force}, {"hold", &hold}, {"brake", &brake}, {"brakeForce", &brakeForce}};
    for (const auto& [name, accessor] : table)
        if (fieldName == name)
            return {accessor, &fields};
    return BehaviourComponent::getAccessor(fieldName);
}

void MotorBehaviour::getFieldNames(std::list<std::string>& names) {
    BehaviourComponent::getFieldNames(names);
    names.insert(names.end(),
                 {"joint", "input", "axis", "mode", "speed", "range", "force", "hold", "brake", "brakeForce"});
}

} // namespace tessarin::viewer
