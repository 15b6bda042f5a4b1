#include <viewer/components/HighlightComponent.h>

#include <viewer/Glow.h>
#include <viewer/Hand.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>

#include <cstddef>

namespace tessarin::viewer {

using agent::AgentEvent;

HighlightComponent::~HighlightComponent() {
    if (isOnAgent() && getAgentNode())
        tint(0);
}

bool HighlightComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) {
    events.insert(events.end(), {AgentEvent::MOUSE_ENTER, AgentEvent::MOUSE_EXIT});
    return true;
}

void HighlightComponent::setAgentNode(agent::AgentNode* node) {
    if (getAgentNode() && getAgentNode() != node)
        tint(0);
    Component::setAgentNode(node);
}

void HighlightComponent::mouseEnter() {
    if (Hand::instance().getPointed() == getAgentNode())
        tint(fields.strength);
}

void HighlightComponent::mouseExit() {
    tint(0);
}

void HighlightComponent::tint(double strength) {
    const osg::ref_ptr<osg::Transform> transform = getAgentNode()->getOsgTransform();
    if (transform)
        setGlow(*transform, Glow::HIGHLIGHT,
                osg::Vec4d(fields.colour[0], fields.colour[1], fields.colour[2], strength));
}

agent::AccessorWithObject HighlightComponent::getAccessor(const std::string& fieldName) {
    static agent::Accessor<gmtl::Vec<double, 3>> colour(offsetof(Fields, colour));
    static agent::Accessor<double> strength(offsetof(Fields, strength));
    if (fieldName == "colour")
        return {&colour, &fields};
    if (fieldName == "strength")
        return {&strength, &fields};
    return Component::getAccessor(fieldName);
}

void HighlightComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
    names.insert(names.end(), {"colour", "strength"});
}

} // namespace tessarin::viewer
