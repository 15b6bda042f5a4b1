#pragma once

#include <agent/AgentNode.h>

#include <cstdint>
#include <iterator>
#include <memory>
#include <unordered_set>

namespace tessarin::agent {

/// Something that the library does on an agent and that calls the host meanwhile. While it lasts, no sweep deletes the
/// agent or one above it; if the host does, isOver() tells. An agent chains the visits that are under way on it, the
/// innermost first: they end in the reverse of the order in which they began.
struct AgentNode::Visit {
    enum Kind { PLAIN, WALK_OVER_CHILDREN, WALK_OVER_COMPONENTS };

    // The chain names this local only as long as it lives: the destructor takes it out, or the agent is gone before.
    // GCC sees the first half of that.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
    explicit Visit(AgentNode& agent, Kind newKind = PLAIN) : node(&agent), outer(agent.visits), kind(newKind) {
        agent.visits = this;
    }
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic pop
#endif

    ~Visit() {
        if (node)
            node->visits = outer;
    }

    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    bool isOver() const {
        return !node;
    }

    /// To be called when the agent ends.
    static void endAll(AgentNode& agent) {
        for (; agent.visits; agent.visits = agent.visits->outer)
            agent.visits->node = nullptr;
    }

    AgentNode* node; ///< null once the agent is gone
    Visit* outer;
    const Kind kind;
};

/// A visit that goes along a list of the agent's and survives whatever the visited ones do: entries that leave the list
/// are not visited any more. The agent tells the walks under way on it what happens to the list.
template <class T>
struct AgentNode::Walk : Visit {
    using Entry = typename std::list<T*>::iterator;

    Walk(AgentNode& agent, Kind newKind, std::list<T*>& walked, Entry entry)
        : Visit(agent, newKind), list(walked), current(entry), firstAppended(walked.end()) {}

    /// To be called before an entry leaves the list.
    void leave(Entry entry) {
        if (firstAppended == entry)
            ++firstAppended;
        if (current == entry) {
            ++current;
            isAhead = true;
        }
    }

    /// To be called after an entry was appended to the list.
    void append() {
        const Entry last = std::prev(list.end());
        if (firstAppended == list.end())
            firstAppended = last;
        if (current == list.end())
            current = last;
    }

    std::list<T*>& list; ///< of a living agent
    Entry current;
    Entry firstAppended;  ///< the first entry that was not there when the walk began
    bool isAhead = false; ///< the entry visited has left, and current is one that is yet to be visited
};

/// A walk over components. Those that are attached meanwhile are not visited.
/// @code
/// for (ComponentWalk walk(agent); Component* component = walk.get(); walk.advance())
/// @endcode
struct AgentNode::ComponentWalk : Walk<Component> {
    explicit ComponentWalk(AgentNode& agent)
        : Walk(agent, WALK_OVER_COMPONENTS, agent.components, agent.components.begin()) {}

    /// Null at the end and when the agent is gone.
    Component* get() const { return node && current != firstAppended ? *current : nullptr; }

    void advance() {
        if (node && !isAhead)
            ++current;
        isAhead = false;
    }
};

/// A walk over children, those that are appended meanwhile included: each child is visited once, however often it
/// leaves and comes back. Only one that stands several times in the list from the beginning is visited that often.
struct AgentNode::ChildWalk : Walk<AgentNode> {
    /// @param entry where it begins; the children before it count as visited.
    ChildWalk(AgentNode& agent, Entry entry) : Walk(agent, WALK_OVER_CHILDREN, agent.children, entry) {}
    explicit ChildWalk(AgentNode& agent) : ChildWalk(agent, agent.children.begin()) {}

    /// Null at the end and when the agent is gone.
    AgentNode* get() const { return node && current != list.end() ? *current : nullptr; }

    void advance() {
        if (!node)
            return;
        if (!isAhead)
            ++current;
        isAhead = true;
        isBehindAppended = isBehindAppended || current == firstAppended;
        if (isBehindAppended)
            while (current != list.end() && hasVisited(**current))
                ++current;
        isAhead = false;
        if (knowsAll && current != list.end())
            visited->insert((*current)->serial);
    }

    /// To be called before a child is taken out, since it may come back.
    void noteDeparture(const AgentNode& child) {
        if (!isAhead && current != list.end() && *current == &child)
            noteVisited(child);
        else
            noteAllVisited();
    }

private:
    void noteVisited(const AgentNode& child) {
        if (!visited)
            visited = std::make_unique<std::unordered_set<std::uint32_t>>();
        visited->insert(child.serial);
    }

    /// As long as nothing is moved about, the visited children are those before the cursor, and nothing is noted.
    void noteAllVisited() {
        if (knowsAll)
            return;
        knowsAll = true;
        for (auto entry = list.begin(); entry != current; ++entry)
            noteVisited(**entry);
        if (!isAhead && current != list.end())
            noteVisited(**current);
        if (!visited)
            visited = std::make_unique<std::unordered_set<std::uint32_t>>();
    }

    bool hasVisited(const AgentNode& child) {
        if (child.listing.isRepeated())
            noteAllVisited(); // it may stand before the cursor without ever having left
        return visited && visited->count(child.serial) > 0;
    }

    std::unique_ptr<std::unordered_set<std::uint32_t>> visited; // serials of children
    bool knowsAll = false;                                      // visited holds all that were visited
    bool isBehindAppended = false;
};

} // namespace tessarin::agent
