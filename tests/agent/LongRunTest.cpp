// Long random runs against a model of the lists: whatever a host does, from outside and from inside hooks, every list
// holds what it should in the order in which it should, and nothing points at what is gone. Run it with sanitizers.

#include <agent/AgentNode.h>
#include <agent/AgentNodeHandle.h>
#include <tests/doubles/RecordingComponent.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

namespace tessarin::agent {
namespace {

using doubles::RecordingComponent;

class World;

/// An agent whose end the model hears of.
class TrackedAgent : public AgentNode {
public:
    explicit TrackedAgent(World& newWorld) : world(newWorld) {}
    TrackedAgent(const TrackedAgent&) = default;
    TrackedAgent& operator=(const TrackedAgent& other) {
        AgentNode::operator=(other);
        return *this;
    }
    ~TrackedAgent() override;

private:
    World& world;
};

class World {
public:
    World(unsigned seed, bool withCopies) : generator(seed), copying(withCopies) {}

    ~World() {
        quiet = true;
        while (!model.empty())
            deleteAgent(model.begin()->first);
        while (!components.empty())
            deleteComponent(*components.begin());
    }

    void step() {
        act();
        ASSERT_EQ(depth, 0);
        if (++steps % 16 == 0)
            check();
        if (steps % 64 == 0)
            checkSweep();
    }

    void died(AgentNode* agent) {
        EXPECT_TRUE(explicitDeletes > 0 || dispatched.count(agent) == 0) << "swept while being dispatched";
        model.erase(agent);
        dispatched.erase(agent);
        for (auto& [other, entry] : model) {
            erase(entry.children, agent);
            entry.owned.erase(agent);
            if (entry.parent == agent)
                entry.parent = nullptr;
        }
        for (auto& [slot, watched] : watches)
            if (watched.expected == agent)
                watched.expected = nullptr;
    }

private:
    struct Entry {
        std::vector<AgentNode*> children;
        std::vector<Component*> components;
        std::set<AgentNode*> owned; // the children that are not only seen, by an agent that is a copy
        AgentNode* parent = nullptr;
        bool isCopy = false;
    };

    struct Watch {
        AgentNodeHandle handle;
        osg::ref_ptr<osg::Transform> transform;
        AgentNode* expected;
    };

    template <class T>
    static void erase(std::vector<T>& list, const T& value) {
        list.erase(std::remove(list.begin(), list.end(), value), list.end());
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(generator() % limit); }

    AgentNode* anyAgent() { return std::next(model.begin(), below(static_cast<unsigned>(model.size())))->first; }

    RecordingComponent* anyComponent() {
        return *std::next(components.begin(), below(static_cast<unsigned>(components.size())));
    }

    bool isBelow(AgentNode* node, AgentNode* top) {
        if (node == top)
            return true;
        const Entry& entry = model.at(top);
        return std::any_of(entry.children.begin(), entry.children.end(),
                           [&](AgentNode* child) { return isBelow(node, child); });
    }

    /// Copies share the transforms of their sources, so that the scene can close a circle where the tree doesn't.
    static bool isBelowInTheScene(AgentNode* node, AgentNode* top) {
        std::vector<osg::Node*> open{top->getOsgTransform()};
        std::set<osg::Node*> seen;
        while (!open.empty()) {
            osg::Group* const group = open.back()->asGroup();
            open.pop_back();
            if (group == node->getOsgTransform())
                return true;
            for (unsigned i = 0; i < group->getNumChildren(); ++i)
                if (seen.insert(group->getChild(i)).second)
                    open.push_back(group->getChild(i));
        }
        return false;
    }

    void makeAgent() {
        AgentNode* const agent = new TrackedAgent(*this);
        model[agent];
    }

    RecordingComponent* track(RecordingComponent* component) {
        components.insert(component);
        component->actions["deleted"] = [this, component] {
            components.erase(component);
            for (auto& [agent, entry] : model)
                erase<Component*>(entry.components, component);
        };
        for (const char* const hook : {"update", "mousePress", "onAgentModified", "attached"})
            component->actions[hook] = [this, component] { act(onlyAgentOf(component)); };
        return component;
    }

    /// The agent that is being dispatched if a hook of the component runs; null where several come into question.
    AgentNode* onlyAgentOf(Component* component) {
        AgentNode* found = nullptr;
        for (const auto& [agent, entry] : model) {
            if (std::find(entry.components.begin(), entry.components.end(), component) == entry.components.end())
                continue;
            if (found || copying)
                return nullptr;
            found = agent;
        }
        return found;
    }

    void addComponent(AgentNode* agent, RecordingComponent* component) {
        model[agent].components.push_back(component);
        agent->addComponent(component);
    }

    void addChild(AgentNode* parent, AgentNode* child) {
        if (model[child].isCopy || isBelow(parent, child) || isBelowInTheScene(parent, child))
            return;
        Entry& entry = model[parent];
        entry.children.push_back(child);
        entry.owned.insert(child);
        model[child].parent = parent;
        parent->addChild(child);
    }

    void removeChild(AgentNode* parent, AgentNode* child) {
        erase(model[parent].children, child);
        model[parent].owned.erase(child);
        parent->removeChild(child);
    }

    void deleteAgent(AgentNode* agent) {
        std::vector<AgentNode*> holders;
        for (const auto& [other, entry] : model)
            if (std::count(entry.children.begin(), entry.children.end(), agent))
                holders.push_back(other);
        for (AgentNode* const holder : holders)
            removeChild(holder, agent);
        ++explicitDeletes;
        delete agent;
        --explicitDeletes;
    }

    void removeComponent(AgentNode* agent, RecordingComponent* component) {
        erase<Component*>(model[agent].components, component);
        agent->removeComponent(component);
    }

    void deleteComponent(RecordingComponent* component) {
        if (below(2))
            for (auto& [agent, entry] : model)
                if (std::count(entry.components.begin(), entry.components.end(), component))
                    removeComponent(agent, component);
        delete component;
    }

    void copyAgent(AgentNode* source) {
        AgentNode* const copy = new TrackedAgent(static_cast<TrackedAgent&>(*source));
        assign(copy, source);
        model[copy].isCopy = true;
    }

    void assign(AgentNode* target, AgentNode* source) {
        const Entry& from = model[source];
        Entry& to = model[target];
        to.children = from.children;
        to.components = from.components;
        to.parent = from.parent;
        to.owned.clear();
    }

    void sendEvent(AgentNode* agent) {
        static constexpr AgentEvent::_AgentEventEnum events[] = {AgentEvent::UPDATE, AgentEvent::MOUSE_PRESS};
        agent->sendEvent(events[below(2)]);
    }

    /// One random thing that a host may do, at the top or from the hook of a component of that agent.
    void act(AgentNode* dispatching = nullptr) {
        if (quiet || depth > 3 || (depth > 0 && below(3) > 0))
            return;
        const bool isNew = dispatching && dispatched.insert(dispatching).second;
        ++depth;
        doSomething();
        --depth;
        if (isNew)
            dispatched.erase(dispatching);
    }

    void doSomething() {
        if (model.size() < 5 || (model.size() < 40 && below(6) == 0))
            return makeAgent();
        // What hurts most is done to the agents that are being dispatched.
        AgentNode* const agent = dispatched.empty() || below(2) ? anyAgent() : *dispatched.begin();
        AgentNode* const other = anyAgent();
        switch (below(copying ? 16 : 14)) {
        case 0:
        case 1:
        case 2:
            return addChild(agent, other);
        case 3:
            return removeChild(agent, other);
        case 4:
            return below(3) ? agent->markForRemoval() : deleteAgent(agent);
        case 5:
        case 6: {
            const RecordingComponent::Events events{AgentEvent::UPDATE, AgentEvent::MOUSE_PRESS,
                                                    AgentEvent::AGENT_MODIFIED};
            if (components.size() < 80)
                addComponent(agent, track(new RecordingComponent(nullptr, {}, events)));
            return;
        }
        case 7:
            return components.empty() ? void() : addComponent(agent, anyComponent());
        case 8:
            return components.empty() ? void() : removeComponent(agent, anyComponent());
        case 9:
            return components.empty() || below(3) ? void() : deleteComponent(anyComponent());
        case 10:
            return agent->modifyWithXml("<AgentNode><Transform><Translate>1 2 3</Translate><Rotate>0 0 0 1</Rotate>"
                                        "</Transform></AgentNode>");
        case 11: {
            // The transform of a copy leads to the copy's source.
            watches[below(50)] = {agent, copying ? nullptr : agent->getOsgTransform(), agent};
            return;
        }
        case 14:
            if (model.size() < 40)
                copyAgent(agent);
            return;
        case 15:
            if (below(4) == 0 && !isBelow(agent, other) && !isBelow(other, agent)) {
                assign(agent, other);
                static_cast<TrackedAgent&>(*agent) = static_cast<TrackedAgent&>(*other);
            }
            return;
        default:
            return sendEvent(agent);
        }
    }

    void check() {
        for (const auto& [agent, entry] : model) {
            const std::vector<AgentNode*> children(agent->getChildren().begin(), agent->getChildren().end());
            ASSERT_EQ(children, entry.children) << "after step " << steps;
            std::vector<Component*> held;
            agent->visitComponents([&](Component* component) { held.push_back(component); });
            ASSERT_EQ(held, entry.components) << "after step " << steps;
            ASSERT_EQ(agent->getParent(), entry.parent) << "after step " << steps;
            if (copying)
                continue; // copies share their transforms with their sources
            std::vector<AgentNode*> inTheScene;
            for (unsigned i = 0; i < agent->getOsgTransform()->getNumChildren(); ++i)
                inTheScene.push_back(
                    AgentNode::getAgentNode(agent->getOsgTransform()->getChild(i)->asGroup()->asTransform()));
            ASSERT_EQ(inTheScene, entry.children) << "after step " << steps;
        }
        for (const auto& [slot, watched] : watches) {
            ASSERT_EQ(watched.handle.get(), watched.expected);
            if (watched.transform) {
                ASSERT_EQ(AgentNode::getAgentNode(watched.transform), watched.expected);
            }
        }
    }

    /// A quiet event takes all marked children of the branch that the branch owns.
    void checkSweep() {
        AgentNode* const agent = anyAgent();
        quiet = true;
        agent->sendEvent(AgentEvent::RESERVED);
        quiet = false;
        check();
        for (const auto& [other, entry] : model)
            if (isBelow(other, agent))
                for (const AgentNode* const child : entry.owned) {
                    ASSERT_FALSE(child->getMarkedForRemoval()) << "after step " << steps;
                }
    }

    std::mt19937 generator;
    const bool copying;
    std::map<AgentNode*, Entry> model;
    std::set<RecordingComponent*> components;
    std::map<unsigned, Watch> watches;
    std::set<AgentNode*> dispatched; // hooks of these are running
    int explicitDeletes = 0;
    int depth = 0;
    int steps = 0;
    bool quiet = false;
};

TrackedAgent::~TrackedAgent() {
    world.died(this);
}

class LongRun : public testing::TestWithParam<unsigned> {};

TEST_P(LongRun, NothingDanglesAndEveryListIsRight) {
    const int before = RecordingComponent::alive;
    for (const bool copying : {false, true}) {
        World world(GetParam(), copying);
        for (int i = 0; i < 10'000 && !HasFatalFailure(); ++i)
            world.step();
    }
    EXPECT_EQ(RecordingComponent::alive, before);
}

INSTANTIATE_TEST_SUITE_P(Seeds, LongRun, testing::Values(1u, 2u, 3u, 4u));

} // namespace
} // namespace tessarin::agent
