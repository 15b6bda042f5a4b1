// An event that goes through a tree of agents, beside walks over the same agents.

#include <bench/Listener.h>
#include <bench/Row.h>
#include <bench/Trees.h>

#include <osg/NodeVisitor>
#include <sigc++/signal.h>

#include <memory>

namespace tessarin::bench {

using agent::AgentEvent;
using agent::AgentNode;

namespace {

AgentNode& silentTree() {
    static AgentNode* const root = makeAgents(treeSize).front();
    return *root;
}

AgentNode& loudTree() {
    static AgentNode* const root = [] {
        const std::vector<AgentNode*> agents = makeAgents(treeSize);
        for (AgentNode* const agent : agents) {
            agent->addComponent((new Listener)->asComponent());
        }
        return agents.front();
    }();
    return *root;
}

void sendSilentEvent(benchmark::State& state) {
    AgentNode& root = silentTree();
    for (auto _ : state) {
        root.sendEvent(AgentEvent::UPDATE);
    }
}

void walk(AgentNode& agent) {
    benchmark::DoNotOptimize(&agent);
    for (AgentNode* const child : agent.getChildren()) {
        walk(*child);
    }
}

void walkAgents(benchmark::State& state) {
    AgentNode& root = silentTree();
    for (auto _ : state) {
        walk(root);
    }
}

void visitTransforms(benchmark::State& state) {
    class Visitor : public osg::NodeVisitor {
    public:
        Visitor() : osg::NodeVisitor(osg::NodeVisitor::TRAVERSE_ALL_CHILDREN) {}
    } visitor;
    AgentNode& root = silentTree();
    for (auto _ : state) {
        root.getOsgTransform()->accept(visitor);
    }
}

void sendLoudEvent(benchmark::State& state) {
    AgentNode& root = loudTree();
    for (auto _ : state) {
        root.sendEvent(AgentEvent::UPDATE);
    }
}

using Signals = std::vector<sigc::signal<void>>;

void emitFor(AgentNode& agent, Signals::iterator& signal) {
    (signal++)->emit();
    for (AgentNode* const child : agent.getChildren()) {
        emitFor(*child, signal);
    }
}

// The signals stand in the order of the walk, each with a slot that calls a method as a component's hook is called.
void walkAndEmit(benchmark::State& state) {
    AgentNode& root = loudTree();
    static Listener listener;
    static Signals* const signals = [] {
        auto* const all = new Signals(treeSize);
        for (sigc::signal<void>& signal : *all) {
            signal.connect([] { listener.asComponent()->update(); });
        }
        return all;
    }();
    for (auto _ : state) {
        auto signal = signals->begin();
        emitFor(root, signal);
    }
}

const RowRegistration rows[] = {
    RowRegistration({"event_silent", 1.3, sendSilentEvent, walkAgents, treeSize}),
    RowRegistration({"event_visitor", 0.85, sendSilentEvent, visitTransforms, treeSize}),
    RowRegistration({"event_loud", 1.5, sendLoudEvent, walkAndEmit, treeSize}),
};

} // namespace

} // namespace tessarin::bench
