#pragma once

#include <agent/AgentNodeHandle.h>
#include <agent/Component.h>
#include <agent/Export.h>
#include <agent/SimObjectFactory.h>

#include <iosfwd>
#include <list>
#include <utility>

namespace tessarin::agent {

/// Puts off changes to the agent tree: additions and removals of children are scheduled here and carried out at the
/// component's next update, in the AgentEvent::UPDATE of its agent.
///
/// Any agent may hold the component, and the agents that it changes need not be related to it. All additions go before
/// all removals, so a child that is to move is scheduled for both, in either order. Nothing is deleted: a removed child
/// belongs to the caller.
///
/// Scheduled agents aren't owned. A pair with an agent that is gone by the time of the update is passed over.
class TESSARIN_AGENT_EXPORT SceneGraphModifierComponent : public Component {
public:
    SceneGraphModifierComponent() = default;

    /// A copy has the same work waiting.
    SceneGraphModifierComponent(const SceneGraphModifierComponent&) = default;
    SceneGraphModifierComponent& operator=(const SceneGraphModifierComponent&) = default;

    /// Drops what is still waiting.
    ~SceneGraphModifierComponent() override;

    const char* getClassName() override;
    void update() override;
    AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;
    virtual void printValues(std::ostream& stream);

    /// Schedules parent->addChild(child).
    void scheduleAddChild(AgentNode* parent, AgentNode* child);

    /// Schedules parent->removeChild(child).
    void scheduleRemoveChild(AgentNode* parent, AgentNode* child);

private:
    using Pairs = std::list<std::pair<AgentNodeHandle, AgentNodeHandle>>; // parent and child, oldest first

    Pairs scheduledAdditions;
    Pairs scheduledRemovals;
};

/// Makes a SceneGraphModifierComponent for SimObjectDB.
class TESSARIN_AGENT_EXPORT SimObjectFactorySceneGraphModifierComponent final : public SimObjectFactory {
public:
    SimObject* create() override;
};

} // namespace tessarin::agent
