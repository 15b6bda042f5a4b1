#include <agent/RigidBodyComponent.h>

#include <agent/AgentNode.h>
#include <agent/SimObjectDB.h>

namespace tessarin::agent {

static SimObjectFactoryRigidBodyComponent factory;
[[maybe_unused]] static const bool registered = [] {
    SimObjectDB::instance()->registerFactory(&factory, "RigidBodyComponent");
    return true;
}();

SimObject* SimObjectFactoryRigidBodyComponent::create() {
    return new RigidBodyComponent;
}

RigidBodyComponent::~RigidBodyComponent() = default;

RigidBodyComponent& RigidBodyComponent::operator=(const RigidBodyComponent& other) {
    if (this == &other)
        return *this;
    if (body.isOwner())
        body.get()->setUserData(nullptr);
    Component::operator=(other);
    body = other.body;
    return *this;
}

const char* RigidBodyComponent::getClassName() {
    return "RigidBodyComponent";
}

bool RigidBodyComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) {
    events.push_back(AgentEvent::UPDATE);
    return true;
}

void RigidBodyComponent::update() {
    dynamics::DynamicsBody* const active = body.get();
    if (!active || !agentNode || !active->isActive())
        return;
    gmtl::Matrix<double, 4, 4> matrix;
    active->getMatrix(matrix);
    agentNode->setMatrix(matrix);
}

void RigidBodyComponent::mousePress() {}

AccessorWithObject RigidBodyComponent::getAccessor(const std::string& fieldName) {
    return Component::getAccessor(fieldName);
}

void RigidBodyComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
}

void RigidBodyComponent::printValues(std::ostream& stream) {
    Component::printValues(stream);
}

void RigidBodyComponent::setBody(dynamics::DynamicsBody* newBody) {
    if (newBody == body.get())
        return;
    body.reset(newBody);
    if (newBody)
        newBody->setUserData(this);
}

} // namespace tessarin::agent
