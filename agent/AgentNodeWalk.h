#pragma once

#include <agent/AgentNode.h>

#include <iterator>
#include <memory>
#include <type_traits>
#include <unordered_map>

namespace tessarin::agent {

/// A walk over an agent's children or components that survives whatever the visited ones do: entries that leave the
/// list are not visited any more, and the walk ends when the agent itself is deleted. Children that are appended
/// meanwhile are visited, though not one that has been visited, leaves and comes back; components that are appended are
/// not. Walks nest; an agent knows those under way on it and corrects them.
/// @code
/// for (walk.begin(); AgentNode* child = walk.get(); walk.advance())
/// @endcode
template <class T>
struct AgentNode::Walk {
    using Entry = typename std::list<T*>::iterator;
    static constexpr bool overChildren = std::is_same_v<T, AgentNode>;

    // The chain names this local only as long as it lives: the destructor takes it out, or the agent is gone before.
    // GCC sees the first half of that.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
    explicit Walk(AgentNode& agent) : node(&agent), outer(chain(agent)) {
        chain(agent) = this;
    }
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic pop
#endif

    ~Walk() {
        if (node)
            chain(*node) = outer;
    }

    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    void begin() {
        if (node)
            beginAt(list(*node).begin());
    }

    /// @param entry of the agent's list; the agent must not have gone.
    void beginAt(Entry entry) {
        started = true;
        onNext = false;
        current = entry;
        end = list(*node).end();
    }

    /// Null at the end and when the agent is gone.
    T* get() const {
        return node && current != end ? *current : nullptr;
    }

    void advance() {
        if (onNext)
            onNext = false;
        else
            ++current;
        if constexpr (overChildren)
            if (departed)
                skipReturned();
    }

    /// True as long as the entry that get() gave last is still in the list.
    bool isOnVisited() const {
        return node && !onNext;
    }

    static Walk*& chain(AgentNode& agent) {
        if constexpr (overChildren)
            return agent.childWalks;
        else
            return agent.componentWalks;
    }

    static std::list<T*>& list(AgentNode& agent) {
        if constexpr (overChildren)
            return agent.children;
        else
            return agent.components;
    }

    /// To be called before an entry leaves the list of the agent.
    /// @param forGood the entry's object is about to be deleted.
    static void leaving(AgentNode& agent, Entry entry, bool forGood) {
        for (Walk* walk = chain(agent); walk; walk = walk->outer) {
            if (!walk->started)
                continue;
            if constexpr (overChildren) {
                if (!forGood)
                    walk->noteDeparture(*entry, walk->current == entry && !walk->onNext);
            } else if (walk->end == entry) {
                ++walk->end;
            }
            if (walk->current == entry) {
                ++walk->current;
                walk->onNext = true;
            }
        }
    }

    /// To be called after an entry was appended to the list of the agent.
    static void appended(AgentNode& agent) {
        const Entry last = std::prev(list(agent).end());
        for (Walk* walk = chain(agent); walk; walk = walk->outer) {
            if (!walk->started)
                continue;
            if (walk->current == list(agent).end())
                walk->current = walk->onNext || !overChildren ? last : walk->current;
            if (!overChildren && walk->end == list(agent).end())
                walk->end = last;
        }
    }

    /// To be called when the agent ends.
    static void ending(AgentNode& agent) {
        for (Walk* walk = chain(agent); walk; walk = walk->outer) {
            walk->node = nullptr;
            walk->onNext = true;
        }
        chain(agent) = nullptr;
    }

    AgentNode* node; ///< null once the agent is gone
    bool started = false;
    bool onNext = false; ///< the visited entry has left, and current is already the one behind it
    Entry current;
    Entry end;
    Walk* outer;

private:
    struct Departure {
        AgentNodeHandle child; // so that a new agent at an old address is not taken for the one that left
        bool visited = false;
    };

    // Whether a child behind the cursor or before it leaves isn't known without a search. It is taken as not visited
    // the first time, so that no hook that moves children about keeps a walk going for ever.
    void noteDeparture(AgentNode* child, bool visited) {
        if (!departed)
            departed = std::make_unique<std::unordered_map<const AgentNode*, Departure>>();
        const auto [known, isNew] = departed->try_emplace(child, Departure{child, visited});
        if (isNew)
            return;
        known->second.visited = visited || known->second.child;
        known->second.child = child;
    }

    void skipReturned() {
        while (node && current != end) {
            const auto known = departed->find(*current);
            if (known == departed->end() || !known->second.child || !known->second.visited)
                return;
            ++current;
        }
    }

    std::unique_ptr<std::unordered_map<const AgentNode*, Departure>> departed;
};

/// Something that the library does on an agent and that calls the host meanwhile. While it lasts, no sweep of another
/// event deletes the agent; if the host does, isOver() tells.
struct AgentNode::Visit {
    explicit Visit(AgentNode& agent) : pin(agent) { ++visits; }
    ~Visit() { --visits; }

    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    bool isOver() const { return !pin.node; }

    ChildWalk pin;
};

} // namespace tessarin::agent
