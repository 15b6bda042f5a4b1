// Long random runs against a model of the lists and of the events: whatever a host does, from outside and from inside
// hooks, every list holds what it should in the order in which it should, every event reaches whom it should and takes
// whom it should, and nothing points at what is gone. Run it with sanitizers.

#include <tests/agent/AgentTest.h>

#include <set>

namespace tessarin::agent {
namespace {

class World {
public:
    explicit World(unsigned seed) : generator(seed) {}

    ~World() {
        quiet = true;
        while (!model.empty())
            deleteAgent(model.begin()->first);
        while (!components.empty())
            delete *components.begin();
    }

    void step() {
        act();
        if (++steps % 64 == 0)
            sweep();
        if (steps % 16 == 0)
            check();
    }

private:
    /// What of an agent outlasts its destructor.
    struct Frame {
        explicit Frame(World& newWorld) : world(newWorld), number(newWorld.agentsMade++) {}
        ~Frame() { --world.destructors; }
        World& world;
        const int number;
    };

    /// An agent whose first component tells which events reach it.
    struct Tracked : Frame, AgentNode {
        explicit Tracked(World& newWorld) : Frame(newWorld) {
            auto* const listener = new RecordingComponent(nullptr, {}, heard());
            for (const char* const hook : {"update", "mousePress", "onAgentModified"})
                listener->actions[hook] = [this] {
                    world.reached(this);
                    world.act();
                };
            listener->actions["deleted"] = [this] { world.act(); };
            world.model[this].components = {listener};
            addComponent(listener);
        }
        ~Tracked() override { world.died(this); }
    };

    /// Makes a run depend on its seed alone and not on addresses.
    struct Older {
        bool operator()(const AgentNode* a, const AgentNode* b) const {
            return static_cast<const Tracked*>(a)->number < static_cast<const Tracked*>(b)->number;
        }
    };

    struct Child {
        int number; // in the order of all additions
        AgentNode* agent;
    };

    struct Entry {
        std::vector<Child> children;
        std::vector<Component*> components;
        AgentNode* parent = nullptr;
    };

    struct Watch {
        AgentNodeHandle handle;
        osg::ref_ptr<osg::Transform> transform;
        AgentNode* expected;
    };

    /// An event that passes through an agent.
    struct Dispatch {
        AgentNode* agent; // null when it has been deleted
        enum { EXPECTED, BEGUN, AT_CHILDREN, SWEEPING } state = EXPECTED;
        int firstAppended = 0;
        std::set<int> numbers = {};
        std::set<AgentNode*> agents = {};

        /// The next to be visited: an entry that was there from the beginning, or a child that has not been visited.
        AgentNode* next(const std::vector<Child>& children, int additions) {
            if (state == BEGUN)
                firstAppended = additions;
            if (state != SWEEPING)
                state = AT_CHILDREN;
            for (const Child& child : children)
                if (state == AT_CHILDREN && numbers.insert(child.number).second &&
                    (agents.insert(child.agent).second || child.number < firstAppended))
                    return child.agent;
            return nullptr;
        }
    };

    static Events heard() { return {AgentEvent::UPDATE, AgentEvent::MOUSE_PRESS, AgentEvent::AGENT_MODIFIED}; }

    static bool holds(const std::vector<Child>& children, const AgentNode* agent) {
        return std::any_of(children.begin(), children.end(), [=](const Child& child) { return child.agent == agent; });
    }

    static void eraseChild(std::vector<Child>& children, const AgentNode* agent) {
        children.erase(
            std::remove_if(children.begin(), children.end(), [=](const Child& child) { return child.agent == agent; }),
            children.end());
    }

    /// The child that the innermost dispatch comes to, null if it is through with its children.
    AgentNode* nextOfLast() {
        Dispatch& last = dispatches.back();
        return last.agent ? last.next(model.at(last.agent).children, additions) : nullptr;
    }

    /// Follows the dispatches from that place on to where the next hook is expected. Each ends with a sweep.
    void follow(std::size_t place) {
        while (dispatches.size() > place) {
            if (dispatches.back().agent && dispatches.back().state == Dispatch::EXPECTED)
                return;
            if (AgentNode* const child = nextOfLast()) {
                dispatches.push_back({child});
                return;
            }
            if (AgentNode* const agent = dispatches.back().agent) {
                for (const Child& child : model.at(agent).children)
                    EXPECT_TRUE(!child.agent->getMarkedForRemoval() || isDispatched(child.agent)) << "outlived a sweep";
            }
            dispatches.pop_back();
        }
    }

    void reached(AgentNode* agent) {
        follow(0);
        ASSERT_FALSE(dispatches.empty()) << "reached by an event that was over";
        ASSERT_EQ(dispatches.back().agent, agent) << "somebody else should have been reached";
        ASSERT_EQ(dispatches.back().state, Dispatch::EXPECTED);
        dispatches.back().state = Dispatch::BEGUN;
    }

    template <class Send>
    void dispatch(AgentNode* agent, Send send) {
        const std::size_t before = dispatches.size();
        const int destructorsBefore = std::exchange(destructors, 0);
        const bool byHand = std::exchange(isDeletedByHand, false);
        dispatches.push_back({agent});
        send();
        follow(before);
        EXPECT_EQ(dispatches.size(), before) << "somebody was not reached";
        destructors = destructorsBefore;
        isDeletedByHand = byHand;
    }

    /// Whether an event passes through the agent or below it, or a component is just attached there.
    bool isDispatched(AgentNode* top) {
        const auto isThere = [&](AgentNode* agent) { return agent && isBelow(agent, top); };
        return std::any_of(attaching.begin(), attaching.end(), isThere) ||
               std::any_of(dispatches.begin(), dispatches.end(), [&](const Dispatch& d) { return isThere(d.agent); });
    }

    void died(Tracked* agent) {
        if (destructors == 0 && !isDeletedByHand && !quiet) {
            // It is swept. The dispatches above its parent's are over, and that one has visited all.
            while (!dispatches.empty() && !(dispatches.back().agent && !nextOfLast() &&
                                            holds(model.at(dispatches.back().agent).children, agent)))
                dispatches.pop_back();
            EXPECT_FALSE(dispatches.empty()) << "swept too early or by nobody";
            if (!dispatches.empty())
                dispatches.back().state = Dispatch::SWEEPING;
        }
        EXPECT_TRUE(isDeletedByHand || quiet || !isDispatched(agent)) << "deleted while being dispatched";
        ++destructors;
        doomed.erase(agent);
        for (const Child& child : model.at(agent).children)
            doomed.insert(child.agent);
        model.erase(agent);
        for (Dispatch& dispatch : dispatches) {
            dispatch.agents.erase(agent);
            if (dispatch.agent == agent)
                dispatch.agent = nullptr;
        }
        std::replace<std::vector<AgentNode*>::iterator, AgentNode*>(attaching.begin(), attaching.end(), agent, nullptr);
        for (auto& [other, entry] : model) {
            eraseChild(entry.children, agent);
            if (entry.parent == agent)
                entry.parent = nullptr;
        }
        for (auto& [slot, watched] : watches)
            if (watched.expected == agent)
                watched.expected = nullptr;
    }

    unsigned below(std::size_t limit) { return static_cast<unsigned>(generator() % limit); }

    template <class Container>
    auto any(const Container& container) {
        return *std::next(container.begin(), below(container.size()));
    }

    bool isBelow(AgentNode* node, AgentNode* top) {
        const std::vector<Child>& children = model.at(top).children;
        return node == top || std::any_of(children.begin(), children.end(),
                                          [&](const Child& child) { return isBelow(node, child.agent); });
    }

    bool isDoomed(AgentNode* agent) {
        return std::any_of(doomed.begin(), doomed.end(), [&](AgentNode* top) { return isBelow(agent, top); });
    }

    void addChild(AgentNode* parent, AgentNode* child) {
        // What is hung below an agent that is just being deleted goes with it.
        if (isBelow(parent, child) || isDoomed(parent))
            return;
        model[parent].children.push_back({additions++, child});
        model[child].parent = parent;
        parent->addChild(child);
    }

    void removeChild(AgentNode* parent, AgentNode* child) {
        eraseChild(model[parent].children, child);
        parent->removeChild(child);
    }

    void removeFromParents(AgentNode* agent) {
        for (const auto& [other, entry] : model)
            if (holds(entry.children, agent))
                removeChild(other, agent);
    }

    template <class T>
    void deleteByHand(T* object) {
        const bool before = std::exchange(isDeletedByHand, true);
        delete object;
        isDeletedByHand = before;
    }

    void deleteAgent(AgentNode* agent) {
        removeFromParents(agent);
        deleteByHand(agent);
    }

    void addComponent(AgentNode* agent, RecordingComponent* component) {
        model[agent].components.push_back(component);
        attaching.push_back(agent);
        agent->addComponent(component);
        attaching.pop_back();
    }

    void removeComponent(Component* component) {
        for (auto& [agent, entry] : model)
            entry.components.erase(std::remove(entry.components.begin(), entry.components.end(), component),
                                   entry.components.end());
    }

    RecordingComponent* makeComponent() {
        auto* const component = new RecordingComponent(nullptr, {}, heard());
        components.push_back(component);
        component->actions["deleted"] = [this, component] {
            components.erase(std::find(components.begin(), components.end(), component));
            removeComponent(component);
            if (!isDeletedByHand) // else its agent, which still lists it, must not end meanwhile
                act();
        };
        for (const char* const hook : {"update", "mousePress", "onAgentModified", "attached"})
            component->actions[hook] = [this] { act(); };
        return component;
    }

    /// One random thing that a host may do, at the top or from a hook.
    void act() {
        if (quiet || depth > 3 || (depth > 0 && below(3) > 0))
            return;
        ++depth;
        doSomething();
        --depth;
    }

    void doSomething() {
        if (model.size() < 5 || (model.size() < 40 && below(6) == 0)) {
            new Tracked(*this);
            return;
        }
        // What hurts most is done to the agents that are being dispatched.
        AgentNode* const hurt = dispatches.empty() ? nullptr : any(dispatches).agent;
        AgentNode* const agent = hurt && below(2) ? hurt : any(model).first;
        AgentNode* const other = any(model).first;
        RecordingComponent* const component = components.empty() ? nullptr : any(components);
        const unsigned what = below(18);
        if (what < 3) {
            addChild(agent, other);
        } else if (what == 3) {
            removeChild(agent, other);
        } else if (what == 4) {
            below(3) ? agent->markForRemoval() : deleteAgent(agent);
        } else if (what < 7 && components.size() < 80) {
            addComponent(agent, makeComponent());
        } else if (what == 7 && component && !component->getAgentNode()) {
            addComponent(agent, component);
        } else if (what == 8 && component && component->getAgentNode()) {
            AgentNode* const holder = component->getAgentNode();
            removeComponent(component);
            holder->removeComponent(component);
        } else if (what == 9 && component && below(3) == 0) {
            deleteByHand(component);
        } else if (what == 10) {
            dispatch(agent, [&] { agent->modifyWithXml("<AgentNode/>"); });
        } else if (what == 11) {
            watches[below(50)] = {agent, agent->getOsgTransform(), agent};
        } else if (what < 14 && !model.at(agent).children.empty()) { // to the end
            AgentNode* const child = any(model.at(agent).children).agent;
            removeChild(agent, child);
            addChild(agent, child);
        } else if (what < 16) { // under somebody else, and marked
            removeFromParents(agent);
            addChild(other, agent);
            if (below(2))
                agent->markForRemoval();
        } else {
            dispatch(agent, [&] { agent->sendEvent(below(2) ? AgentEvent::UPDATE : AgentEvent::MOUSE_PRESS); });
        }
    }

    void check() {
        for (const auto& [agent, entry] : model) {
            const osg::Group& group = *agent->getOsgTransform();
            ASSERT_EQ(agent->getChildren().size(), entry.children.size());
            ASSERT_EQ(group.getNumChildren(), entry.children.size());
            unsigned i = 0;
            for (AgentNode* const child : agent->getChildren()) {
                ASSERT_EQ(child, entry.children[i].agent);
                ASSERT_EQ(group.getChild(i++), child->getOsgTransform());
            }
            ASSERT_EQ(componentsOf(*agent), entry.components);
            ASSERT_EQ(agent->getParent(), entry.parent);
        }
        for (const auto& [slot, watched] : watches) {
            ASSERT_EQ(watched.handle.get(), watched.expected);
            ASSERT_EQ(AgentNode::getAgentNode(watched.transform), watched.expected);
        }
    }

    /// A quiet event takes all marked children of the branch.
    void sweep() {
        AgentNode* const agent = any(model).first;
        quiet = true;
        agent->sendEvent(AgentEvent::RESERVED);
        quiet = false;
        for (const auto& [other, entry] : model)
            for (const Child& child : entry.children)
                ASSERT_FALSE(child.agent->getMarkedForRemoval() && isBelow(other, agent));
    }

    std::mt19937 generator;
    std::map<AgentNode*, Entry, Older> model;
    std::vector<RecordingComponent*> components;
    std::map<unsigned, Watch> watches;
    std::vector<Dispatch> dispatches; // the innermost last
    std::vector<AgentNode*> attaching;
    std::set<AgentNode*> doomed; // children of agents whose destructor runs
    int agentsMade = 0, destructors = 0, additions = 0, depth = 0, steps = 0;
    bool isDeletedByHand = false, quiet = false;
};

TEST(LongRun, NothingDanglesAndEveryListIsRight) {
    const int before = RecordingComponent::alive;
    for (const unsigned seed : {1, 2, 3, 4}) {
        World world(seed);
        for (int step = 0; step < 10'000 && !HasFatalFailure(); ++step) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step);
            world.step();
        }
    }
    EXPECT_EQ(RecordingComponent::alive, before);
}

} // namespace
} // namespace tessarin::agent
