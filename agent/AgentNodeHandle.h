#pragma once

#include <agent/Export.h>
#include <agent/Forward.h>

namespace tessarin::agent {

/// A pointer to an agent that knows whether its agent is alive: it becomes null at the moment in which the agent's
/// destructor begins, and stays null even if a new agent comes to stand at the old address.
///
/// It owns nothing and allocates nothing: an agent keeps the handles that watch it in a chain through the handles
/// themselves, so watching and letting go take constant time, and an agent's end takes time for each of its watchers.
/// Like all of the agent tree a handle belongs to the thread of the tree.
class TESSARIN_AGENT_EXPORT AgentNodeHandle {
public:
    AgentNodeHandle() = default;
    AgentNodeHandle(AgentNode* node) { watch(node); } // NOLINT(google-explicit-constructor): it stands for a pointer
    AgentNodeHandle(const AgentNodeHandle& other) : AgentNodeHandle(other.agent) {}
    ~AgentNodeHandle() { unwatch(); }

    AgentNodeHandle& operator=(AgentNode* node) {
        if (node != agent) {
            unwatch();
            watch(node);
        }
        return *this;
    }

    AgentNodeHandle& operator=(const AgentNodeHandle& other) { return *this = other.agent; }

    /// The agent, or null if there never was one or it is gone.
    AgentNode* get() const { return agent; }

    operator AgentNode*() const { return agent; } // NOLINT(google-explicit-constructor): it stands for a pointer
    AgentNode* operator->() const { return agent; }

private:
    friend class AgentNode;

    void watch(AgentNode* node);
    void unwatch();

    AgentNode* agent = nullptr;
    AgentNodeHandle* next = nullptr;
    AgentNodeHandle** link = nullptr; // what points at this handle: the agent's head of the chain or the handle before
};

} // namespace tessarin::agent
