#pragma once

#include <agent/Export.h>
#include <agent/Forward.h>

#include <vector>

namespace tessarin::agent {

/// Remembers in which agents' lists a child agent or a component stands, so that the end of the one leaves nothing in
/// the list of another.
///
/// Nearly everything stands in one list once; that costs a pointer. What stands in further lists as well is noted in a
/// table on the side. A copied object is in no list, so a copied Listing is empty.
class TESSARIN_AGENT_EXPORT Listing {
public:
    Listing() = default;
    Listing(const Listing&) {}
    Listing& operator=(const Listing&) { return *this; }
    ~Listing();

    /// The agent's list has taken the object in once more.
    /// @param shared the agent is a copy of another one and only sees the object: it isn't the agent's to delete.
    void enter(AgentNode* agent, bool shared);

    /// The agent's list no longer holds the object.
    void leave(AgentNode* agent);

    bool isEmpty() const { return !first && !hasMore; }

    /// True if the agent's list holds the object.
    bool holds(const AgentNode* agent) const;

    /// True if the agent's list holds the object, once, and no other list does.
    bool isOnlyIn(const AgentNode* agent) const { return first == agent && !hasMore && !repeated; }

    /// True if the agent's list holds the object without owning it.
    bool isSharedWith(const AgentNode* agent) const;

    /// The first agent whose list holds the object, null if only copies of agents hold it or none.
    AgentNode* getFirstAgent() const { return first; }

    /// True if more than one agent's list may hold the object, or one that only sees it.
    bool hasMoreAgents() const { return hasMore; }

    /// True if some list may hold the object more than once.
    bool isRepeated() const { return repeated; }

    /// Every agent whose list holds the object.
    std::vector<AgentNode*> getAgents() const;

private:
    AgentNode* first = nullptr;
    bool hasMore = false;
    bool repeated = false;
};

} // namespace tessarin::agent
