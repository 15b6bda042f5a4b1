#pragma once

#include <agent/AgentNode.h>

#include <type_traits>

// g++ 12 doesn't see that the destructor of a walk takes the walk's address out again.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif

namespace tessarin::agent {

/// A walk over an agent's children or components that survives whatever the visited ones do: entries that leave the
/// list are not visited any more, appended ones are, and the walk ends when the agent itself is deleted. Walks nest; an
/// agent knows those under way on it and corrects them.
/// @code
/// for (walk.begin(); AgentNode* child = walk.get(); walk.advance())
/// @endcode
template <class T>
struct AgentNode::Walk {
    explicit Walk(AgentNode& agent) : node(&agent), outer(chain(agent)) { chain(agent) = this; }

    ~Walk() {
        if (node)
            chain(*node) = outer;
    }

    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    void begin() {
        if (!node)
            return;
        started = true;
        onNext = false;
        current = list(*node).begin();
    }

    /// Null at the end and when the agent is gone.
    T* get() const { return node && current != list(*node).end() ? *current : nullptr; }

    void advance() {
        if (onNext)
            onNext = false;
        else
            ++current;
    }

    /// True as long as the entry that get() gave last is still in the list.
    bool isOnVisited() const { return node && !onNext; }

    static Walk*& chain(AgentNode& agent) {
        if constexpr (std::is_same_v<T, AgentNode>)
            return agent.childWalks;
        else
            return agent.componentWalks;
    }

    static std::list<T*>& list(AgentNode& agent) {
        if constexpr (std::is_same_v<T, AgentNode>)
            return agent.children;
        else
            return agent.components;
    }

    /// To be called before an entry leaves the list of the agent.
    static void leaving(AgentNode& agent, typename std::list<T*>::iterator entry) {
        for (Walk* walk = chain(agent); walk; walk = walk->outer) {
            if (walk->started && walk->current == entry) {
                ++walk->current;
                walk->onNext = true;
            }
        }
    }

    /// To be called after an entry was appended to the list of the agent: a walk whose last entry has left goes on with
    /// it.
    static void appended(AgentNode& agent) {
        for (Walk* walk = chain(agent); walk; walk = walk->outer)
            if (walk->started && walk->onNext && walk->current == list(agent).end())
                --walk->current;
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
    typename std::list<T*>::iterator current;
    bool started = false;
    bool onNext = false; ///< the visited entry has left, and current is already the one behind it
    Walk* outer;
};

} // namespace tessarin::agent

#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic pop
#endif

namespace tessarin::agent {

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
