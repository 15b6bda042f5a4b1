#include <agent/GeometryComponent.h>

#include <agent/AgentNode.h>
#include <agent/SimObjectDB.h>

namespace tessarin::agent {

static SimObjectFactoryGeometryComponent factory;
[[maybe_unused]] static const bool registered = [] {
    SimObjectDB::instance()->registerFactory(&factory, "GeometryComponent");
    return true;
}();

SimObject* SimObjectFactoryGeometryComponent::create() {
    return new GeometryComponent;
}

GeometryComponent::GeometryComponent(osg::ref_ptr<osg::Node> node) : osgNode(node) {}

GeometryComponent::~GeometryComponent() = default;

GeometryComponent& GeometryComponent::operator=(const GeometryComponent& other) {
    if (this == &other)
        return *this;
    Component::operator=(other);
    if (isOnAgent())
        setOsgNode(other.osgNode);
    else
        osgNode = other.osgNode;
    return *this;
}

const char* GeometryComponent::getClassName() {
    return "GeometryComponent";
}

bool GeometryComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>&) {
    return true;
}

AccessorWithObject GeometryComponent::getAccessor(const std::string& fieldName) {
    return Component::getAccessor(fieldName);
}

void GeometryComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
}

osg::Node* GeometryComponent::getOsgNode() {
    return osgNode.get();
}

void GeometryComponent::printValues(std::ostream& stream) {
    Component::printValues(stream);
}

void GeometryComponent::setOsgNode(osg::ref_ptr<osg::Node> node) {
    const osg::ref_ptr<osg::Transform> transform = agentNode ? agentNode->getOsgTransform() : nullptr;
    if (transform && osgNode)
        transform->removeChild(osgNode);
    if (transform && node)
        transform->addChild(node);
    osgNode = node;
}

} // namespace tessarin::agent
