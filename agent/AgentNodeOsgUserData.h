#pragma once

#include <agent/AgentNodeHandle.h>

#include <osg/Referenced>

namespace tessarin::agent {

/// The link from a transform to its agent, held by the transform as its user data. It doesn't keep the agent alive and
/// knows when the agent is gone. As long as the agent lives, its transforms are to be let go on the thread of the agent
/// tree only.
class AgentNodeOsgUserData final : public osg::Referenced {
public:
    explicit AgentNodeOsgUserData(AgentNode* node) : agent(node) {}

    AgentNode* getAgent() const { return agent.get(); }

private:
    ~AgentNodeOsgUserData() override = default;

    const AgentNodeHandle agent;
};

} // namespace tessarin::agent
