#include <agent/JointComponent.h>

#include <agent/SimObjectDB.h>

namespace tessarin::agent {

static SimObjectFactoryJointComponent factory;
[[maybe_unused]] static const bool registered = [] {
    SimObjectDB::instance()->registerFactory(&factory, "JointComponent");
    return true;
}();

SimObject* SimObjectFactoryJointComponent::create() {
    return new JointComponent;
}

JointComponent::~JointComponent() = default;

const char* JointComponent::getClassName() {
    return "JointComponent";
}

bool JointComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>&) {
    return true;
}

AccessorWithObject JointComponent::getAccessor(const std::string& fieldName) {
    return Component::getAccessor(fieldName);
}

void JointComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
}

void JointComponent::printValues(std::ostream& stream) {
    Component::printValues(stream);
}

void JointComponent::setJoint(dynamics::DynamicsJoint* newJoint) {
    if (newJoint != joint.get())
        joint.reset(newJoint);
}

dynamics::DynamicsD6Joint* JointComponent::getD6Joint() {
    return dynamic_cast<dynamics::DynamicsD6Joint*>(joint.get());
}

dynamics::DynamicsRevoluteJoint* JointComponent::getRevoluteJoint() {
    return dynamic_cast<dynamics::DynamicsRevoluteJoint*>(joint.get());
}

dynamics::DynamicsPrismaticJoint* JointComponent::getPrismaticJoint() {
    return dynamic_cast<dynamics::DynamicsPrismaticJoint*>(joint.get());
}

} // namespace tessarin::agent
