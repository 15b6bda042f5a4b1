#include <agent/RigidBodyComponent.h>

#include <agent/AgentNode.h>
#include <agent/SimObjectDB.h>
#include <dynamics/PoseSource.h>

namespace tessarin::agent {

static SimObjectFactoryRigidBodyComponent factory;
[[maybe_unused]] static const bool registered = [] {
    SimObjectDB::instance()->registerFactory(&factory, "RigidBodyComponent");
    return true;
}();

SimObject* SimObjectFactoryRigidBodyComponent::create() {
    return new RigidBodyComponent;
}

// It stands in no agent's list, so it carries no poses until it is attached.
RigidBodyComponent::RigidBodyComponent(const RigidBodyComponent& other)
    : Component(other), DynamicsUserData(other), body(other.body) {}

RigidBodyComponent::~RigidBodyComponent() = default;

RigidBodyComponent& RigidBodyComponent::operator=(const RigidBodyComponent& other) {
    if (this == &other)
        return *this;
    if (body.isOwner() && body.get() != other.body.get())
        release(*body.get());
    Component::operator=(other);
    body = other.body;
    if (isOnAgent())
        followBody();
    else
        poses.follow(nullptr);
    return *this;
}

const char* RigidBodyComponent::getClassName() {
    return "RigidBodyComponent";
}

bool RigidBodyComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) {
    events.push_back(AgentEvent::UPDATE);
    return true;
}

void RigidBodyComponent::setAgentNode(AgentNode* node) {
    Component::setAgentNode(node);
    followBody();
}

void RigidBodyComponent::update() {
    dynamics::DynamicsBody* const active = body.get();
    if (!active || !agentNode || !active->isActive())
        return;
    gmtl::Matrix<double, 4, 4> matrix;
    active->getMatrix(matrix);
    agentNode->setMatrix(matrix);
    poses.confirm();
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
    followBody();
}

/// The body belongs to the caller from here on, and this component's copies don't see it any more.
void RigidBodyComponent::release(dynamics::DynamicsBody& released) {
    released.setUserData(nullptr);
    if (auto* const source = dynamic_cast<dynamics::PoseSource*>(&released))
        source->dismissReaders();
}

/// From here on the agent has none of the body's poses.
void RigidBodyComponent::followBody() {
    poses.follow(agentNode ? dynamic_cast<dynamics::PoseSource*>(body.get()) : nullptr);
}

} // namespace tessarin::agent
