#include <viewer/components/SpinBehaviour.h>

#include <viewer/SimulationTime.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>

#include <osg/Math>
#include <osg/Quat>

#include <cstddef>

namespace tessarin::viewer {

bool SpinBehaviour::getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) {
    events.push_back(agent::AgentEvent::PRE_PHYSICS_UPDATE);
    return true;
}

void SpinBehaviour::prePhysicsUpdate() {
    const gmtl::Quat<double> now = getAgentNode()->getRotation();
    const osg::Quat turn(osg::DegreesToRadians(fields.degreesPerSecond) * SimulationTime::sinceFrame,
                         osg::Vec3d(fields.axis[0], fields.axis[1], fields.axis[2]));
    osg::Quat next = turn * osg::Quat(now[0], now[1], now[2], now[3]);
    next /= next.length(); // thousands of small turns would add up their rounding
    getAgentNode()->setRotation(gmtl::Quat<double>(next.x(), next.y(), next.z(), next.w()));
}

agent::AccessorWithObject SpinBehaviour::getAccessor(const std::string& fieldName) {
    static agent::Accessor<double> degreesPerSecond(offsetof(Fields, degreesPerSecond));
    static agent::Accessor<gmtl::Vec<double, 3>> axis(offsetof(Fields, axis));
    if (fieldName == "degreesPerSecond")
        return {&degreesPerSecond, &fields};
    if (fieldName == "axis")
        return {&axis, &fields};
    return BehaviourComponent::getAccessor(fieldName);
}

void SpinBehaviour::getFieldNames(std::list<std::string>& names) {
    BehaviourComponent::getFieldNames(names);
    names.insert(names.end(), {"degreesPerSecond", "axis"});
}

} // namespace tessarin::viewer
