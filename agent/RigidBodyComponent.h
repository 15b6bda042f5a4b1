#pragma once

#include <agent/Component.h>
#include <agent/Export.h>
#include <agent/OwnedPointer.h>
#include <agent/SimObjectFactory.h>
#include <dynamics/DynamicsBody.h>
#include <dynamics/DynamicsUserData.h>
#include <dynamics/PoseReader.h>

#include <iosfwd>

namespace tessarin::agent {

/// Ties one rigid body of the dynamics world to one agent: it owns the body, and at each AgentEvent::UPDATE copies the
/// pose of an active body into the agent's local matrix. A body that is a dynamics::PoseSource too is told which of its
/// poses have arrived.
///
/// The body leads and the transform follows. The pose is copied as it is, so the agent's world pose is the body's only
/// while the transforms above the agent are the identity. What a host writes into the transform of an agent with an
/// active body holds until the next update: bodies are moved by AgentNode::magicMove, by documents, or through
/// getBody().
///
/// A body comes in by setBody, from the loading of a model or from the host; a document can create the component but
/// not give it a body. Without a body nothing happens.
class TESSARIN_AGENT_EXPORT RigidBodyComponent : public Component, public dynamics::DynamicsUserData {
public:
    RigidBodyComponent() = default;

    /// A copy sees the body and doesn't own it; it reads null once the body is deleted.
    RigidBodyComponent(const RigidBodyComponent& other);

    /// As the copy constructor. Another body that was owned isn't deleted: it belongs to the caller, has no user data
    /// any more, and earlier copies of this component read null.
    RigidBodyComponent& operator=(const RigidBodyComponent& other);

    /// Deletes the body.
    ~RigidBodyComponent() override;

    const char* getClassName() override;
    bool getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) override;
    void setAgentNode(AgentNode* node) override;
    void update() override;
    void mousePress() override;
    AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;
    virtual void printValues(std::ostream& stream);

    /// Null before setBody.
    dynamics::DynamicsBody* getBody() { return body.get(); }

    /// Takes ownership of a body and becomes its user data; the present body is deleted. The body already held is left
    /// as it is; null deletes and empties.
    void setBody(dynamics::DynamicsBody* newBody);

private:
    friend class AgentNode;

    static void release(dynamics::DynamicsBody& released);
    void followBody();

    OwnedPointer<dynamics::DynamicsBody> body;
    dynamics::PoseReader poses; // follows the body as long as there is an agent to carry its poses to
};

/// Makes a RigidBodyComponent for SimObjectDB.
class TESSARIN_AGENT_EXPORT SimObjectFactoryRigidBodyComponent final : public SimObjectFactory {
public:
    SimObject* create() override;
};

} // namespace tessarin::agent
