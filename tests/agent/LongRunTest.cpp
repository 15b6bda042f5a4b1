// Long random runs against a model of the lists: whatever a host does, from outside and from inside hooks, every list
// holds what it should in the order in which it should, and nothing points at what is gone. Run it with sanitizers.

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
    /// An agent whose end the model hears of.
    struct Tracked : AgentNode {
        explicit Tracked(World& newWorld) : world(newWorld) {}
        ~Tracked() override { world.died(this); }
        World& world;
    };

    struct Entry {
        std::vector<AgentNode*> children;
        std::vector<Component*> components;
        AgentNode* parent = nullptr;
    };

    struct Watch {
        AgentNodeHandle handle;
        osg::ref_ptr<osg::Transform> transform;
        AgentNode* expected;
    };

    void died(Tracked* agent) {
        EXPECT_TRUE(explicitDeletes > 0 || dispatched.count(agent) == 0) << "swept while being dispatched";
        model.erase(agent);
        dispatched.erase(agent);
        for (auto& [other, entry] : model) {
            erase<AgentNode*>(entry.children, agent);
            if (entry.parent == agent)
                entry.parent = nullptr;
        }
        for (auto& [slot, watched] : watches)
            if (watched.expected == agent)
                watched.expected = nullptr;
    }

    template <class T>
    static void erase(std::vector<T>& list, const T& value) {
        list.erase(std::remove(list.begin(), list.end(), value), list.end());
    }

    unsigned below(std::size_t limit) { return static_cast<unsigned>(generator() % limit); }

    template <class Container>
    auto any(const Container& container) {
        return *std::next(container.begin(), below(container.size()));
    }

    bool isBelow(AgentNode* node, AgentNode* top) {
        const std::vector<AgentNode*>& children = model.at(top).children;
        return node == top ||
               std::any_of(children.begin(), children.end(), [&](AgentNode* child) { return isBelow(node, child); });
    }

    void addChild(AgentNode* parent, AgentNode* child) {
        if (isBelow(parent, child))
            return;
        model[parent].children.push_back(child);
        model[child].parent = parent;
        parent->addChild(child);
    }

    void removeChild(AgentNode* parent, AgentNode* child) {
        erase(model[parent].children, child);
        parent->removeChild(child);
    }

    void deleteAgent(AgentNode* agent) {
        for (const auto& [other, entry] : model)
            if (std::count(entry.children.begin(), entry.children.end(), agent))
                removeChild(other, agent);
        ++explicitDeletes;
        delete agent;
        --explicitDeletes;
    }

    void addComponent(AgentNode* agent, RecordingComponent* component) {
        model[agent].components.push_back(component);
        agent->addComponent(component);
    }

    RecordingComponent* makeComponent() {
        auto* const component = new RecordingComponent(
            nullptr, {}, Events{AgentEvent::UPDATE, AgentEvent::MOUSE_PRESS, AgentEvent::AGENT_MODIFIED});
        components.insert(component);
        component->actions["deleted"] = [this, component] {
            components.erase(component);
            for (auto& [agent, entry] : model)
                erase<Component*>(entry.components, component);
        };
        for (const char* const hook : {"update", "mousePress", "onAgentModified", "attached"})
            component->actions[hook] = [this, component] { act(component->getAgentNode()); };
        return component;
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
        if (model.size() < 5 || (model.size() < 40 && below(6) == 0)) {
            model[new Tracked(*this)];
            return;
        }
        // What hurts most is done to the agents that are being dispatched.
        AgentNode* const agent = dispatched.empty() || below(2) ? any(model).first : *dispatched.begin();
        AgentNode* const other = any(model).first;
        RecordingComponent* const component = components.empty() ? nullptr : any(components);
        const unsigned what = below(14);
        if (what < 3)
            addChild(agent, other);
        else if (what == 3)
            removeChild(agent, other);
        else if (what == 4)
            below(3) ? agent->markForRemoval() : deleteAgent(agent);
        else if (what < 7 && components.size() < 80)
            addComponent(agent, makeComponent());
        else if (what == 7 && component && !component->getAgentNode())
            addComponent(agent, component);
        else if (what == 8 && component && component->getAgentNode()) {
            erase<Component*>(model[component->getAgentNode()].components, component);
            component->getAgentNode()->removeComponent(component);
        } else if (what == 9 && component && below(3) == 0)
            delete component;
        else if (what == 10)
            agent->modifyWithXml("<AgentNode/>");
        else if (what == 11)
            watches[below(50)] = {agent, agent->getOsgTransform(), agent};
        else
            agent->sendEvent(below(2) ? AgentEvent::UPDATE : AgentEvent::MOUSE_PRESS);
    }

    void check() {
        for (const auto& [agent, entry] : model) {
            ASSERT_EQ(std::vector<AgentNode*>(agent->getChildren().begin(), agent->getChildren().end()),
                      entry.children);
            ASSERT_EQ(componentsOf(*agent), entry.components);
            ASSERT_EQ(agent->getParent(), entry.parent);
            const osg::Group& group = *agent->getOsgTransform();
            ASSERT_EQ(group.getNumChildren(), entry.children.size());
            for (unsigned i = 0; i < group.getNumChildren(); ++i)
                ASSERT_EQ(group.getChild(i), entry.children[i]->getOsgTransform());
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
            for (const AgentNode* const child : entry.children)
                ASSERT_FALSE(child->getMarkedForRemoval() && isBelow(other, agent));
    }

    std::mt19937 generator;
    std::map<AgentNode*, Entry> model;
    std::set<RecordingComponent*> components;
    std::map<unsigned, Watch> watches;
    std::set<AgentNode*> dispatched; // hooks of these are running
    int explicitDeletes = 0, depth = 0, steps = 0;
    bool quiet = false;
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
