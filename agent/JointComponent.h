#pragma once

#include <agent/Component.h>
#include <agent/Export.h>
#include <agent/OwnedPointer.h>
#include <agent/SimObjectFactory.h>
#include <dynamics/DynamicsJoint.h>

#include <iosfwd>

namespace tessarin::agent {

/// Holds one joint of the dynamics world on an agent, so that the joint has an owner in the tree, a name, and a way to
/// be found from the agent. It listens to no event and does nothing while the simulation runs.
///
/// A joint comes in by setJoint: from the loading of a model, which puts the component on the agent that holds the
/// model and names it after the joint, or from the host.
class TESSARIN_AGENT_EXPORT JointComponent : public Component {
public:
    JointComponent() = default;

    /// A copy sees the joint and doesn't own it; it reads null once the joint is deleted.
    JointComponent(const JointComponent&) = default;

    /// As the copy constructor. Another joint that was owned isn't deleted: it belongs to the caller, and earlier
    /// copies of this component read null.
    JointComponent& operator=(const JointComponent&) = default;

    /// Deletes the joint.
    ~JointComponent() override;

    const char* getClassName() override;
    bool getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) override;
    AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;
    virtual void printValues(std::ostream& stream);

    /// Null before setJoint.
    dynamics::DynamicsJoint* getJoint() { return joint.get(); }

    /// Takes ownership of a joint; the present one is deleted. The joint already held is left as it is; null deletes
    /// and empties.
    void setJoint(dynamics::DynamicsJoint* newJoint);

    /// The joint as one of its kinds; null if there is none or it is of another kind.
    /// @{
    dynamics::DynamicsD6Joint* getD6Joint();
    dynamics::DynamicsRevoluteJoint* getRevoluteJoint();
    dynamics::DynamicsPrismaticJoint* getPrismaticJoint();
    /// @}

private:
    OwnedPointer<dynamics::DynamicsJoint> joint;
};

/// Makes a JointComponent for SimObjectDB.
class TESSARIN_AGENT_EXPORT SimObjectFactoryJointComponent final : public SimObjectFactory {
public:
    SimObject* create() override;
};

} // namespace tessarin::agent
