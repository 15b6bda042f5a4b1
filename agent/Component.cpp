#include <agent/Component.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>
#include <agent/ComponentHandle.h>
#include <agent/Input.h>
#include <agent/SimObjectDB.h>

#include <cassert>
#include <memory>

namespace tessarin::agent {

ComponentHandle* ComponentHandle::innermost = nullptr;

Component::~Component() {
    ComponentHandle::expire(this);
    if (listing.isEmpty())
        return;
    disconnectAll();
    for (AgentNode* const agent : listing.getAgents())
        agent->unlistComponent(this);
}

Component& Component::operator=(const Component& other) {
    if (this == &other)
        return *this;
    SimObject::operator=(other);
    if (listing.isEmpty()) {
        connections = other.connections;
        agentNode = other.agentNode;
    }
    return *this;
}

Component* Component::initialize() {
    return this;
}

bool Component::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>&) {
    return false;
}

void Component::setAgentNode(AgentNode* node) {
    agentNode = node;
}

void Component::onAgentCreated() {}
void Component::onAgentModified() {}
void Component::prePhysicsUpdate() {}
void Component::prePhysicsTick() {}
void Component::postPhysicsTick() {}
void Component::postPhysicsUpdate() {}
void Component::update() {}
void Component::postUpdate() {}
void Component::mousePress() {}
void Component::mouseRelease() {}
void Component::mouseDrag() {}
void Component::mouseEnter() {}
void Component::mouseOver() {}
void Component::mouseExit() {}
void Component::windowResize() {}
void Component::attached() {}
void Component::onCollision(CollisionData&) {}

AccessorWithObject Component::getAccessor(const std::string&) {
    return {};
}

void Component::getFieldNames(std::list<std::string>&) {}

osg::Node* Component::getOsgNode() {
    return nullptr;
}

Component* Component::createComponent(const std::string& className) {
    std::unique_ptr<SimObject> object(SimObjectDB::instance()->createObject(className));
    auto* const component = dynamic_cast<Component*>(object.get());
    if (component)
        static_cast<void>(object.release());
    return component;
}

Input* Component::input() {
    return Input::instance();
}

bool Component::hasAgent(const std::string& name, int depth) const {
    assert(agentNode && "Component::hasAgent is for a component on an agent.");
    return agentNode && agentNode->hasAgent(name, depth);
}

Component* Component::setValue(const char* fieldName, const char* value) {
    assert(fieldName && value && "Component::setValue takes two texts.");
    if (!fieldName || !value)
        return this;
    const AccessorWithObject field = getAccessor(fieldName);
    if (auto* const accessor = dynamic_cast<Accessor<std::string>*>(field.accessor)) {
        std::string text(value);
        static_cast<AbstractAccessor*>(accessor)->setValue(field.object, &text);
    }
    return this;
}

std::string Component::getAsString(const std::string& fieldName) {
    const AccessorWithObject field = getAccessor(fieldName);
    return field.accessor ? field.accessor->getAsString(field.object) : std::string();
}

void Component::setAsString(const std::string& fieldName, const std::string& text) {
    const AccessorWithObject field = getAccessor(fieldName);
    if (field.accessor)
        field.accessor->setAsString(field.object, text);
}

void Component::printValues(std::ostream&) {}

void Component::disconnectAll() {
    for (sigc::connection& connection : connections)
        connection.disconnect();
}

} // namespace tessarin::agent
