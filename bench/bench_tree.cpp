// Trees of agents beside what they are made of: a tree of OpenSceneGraph's transforms alone, and a bare walk.
// Figures are per agent, so a row that grows with the size is a cost that isn't linear.

#include <agent/AgentNode.h>
#include <agent/BehaviourComponent.h>

#include <osg/MatrixTransform>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

using namespace tessarin::agent;

namespace {

constexpr std::int64_t fanOut = 10;

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
}

void countAgents(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Calls add(parent index, index) for each node but the first, parents first.
template <class Add>
void shapeTree(std::int64_t size, Add add) {
    for (std::int64_t i = 1; i < size; ++i)
        add((i - 1) / fanOut, i);
}

std::unique_ptr<AgentNode> makeAgents(std::int64_t size) {
    std::vector<AgentNode*> agents{new AgentNode("root")};
    shapeTree(size, [&](std::int64_t parent, std::int64_t) {
        agents.push_back(agents[static_cast<std::size_t>(parent)]->addChild("agent"));
    });
    return std::unique_ptr<AgentNode>(agents.front());
}

osg::ref_ptr<osg::MatrixTransform> makeTransforms(std::int64_t size) {
    std::vector<osg::ref_ptr<osg::MatrixTransform>> transforms{new osg::MatrixTransform};
    shapeTree(size, [&](std::int64_t parent, std::int64_t) {
        transforms.push_back(new osg::MatrixTransform);
        transforms.back()->setName("agent");
        transforms[static_cast<std::size_t>(parent)]->addChild(transforms.back());
    });
    return transforms.front();
}

std::int64_t walk(const AgentNode& agent) {
    std::int64_t count = 1;
    for (const AgentNode* child : agent.getChildren())
        count += walk(*child);
    return count;
}

class Listener : public BehaviourComponent {
    const char* getClassName() override { return "Listener"; }
    bool getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) override {
        events.push_back(AgentEvent::UPDATE);
        return true;
    }
    void update() override { benchmark::DoNotOptimize(++calls); }

    std::int64_t calls = 0;
};

void attachListeners(AgentNode& agent) {
    agent.addComponent((new Listener)->asComponent());
    for (AgentNode* child : agent.getChildren())
        attachListeners(*child);
}

void floorBuildAndDeleteTransforms(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(makeTransforms(state.range(0)));
    countAgents(state);
}
BENCHMARK(floorBuildAndDeleteTransforms)->Apply(sizes);

void buildAndDeleteAgents(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(makeAgents(state.range(0)));
    countAgents(state);
}
BENCHMARK(buildAndDeleteAgents)->Apply(sizes);

void floorBareWalk(benchmark::State& state) {
    const auto root = makeAgents(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(walk(*root));
    countAgents(state);
}
BENCHMARK(floorBareWalk)->Apply(sizes);

void sendEventNobodyListens(benchmark::State& state) {
    const auto root = makeAgents(state.range(0));
    for (auto _ : state)
        root->sendEvent(AgentEvent::UPDATE);
    countAgents(state);
}
BENCHMARK(sendEventNobodyListens)->Apply(sizes);

void sendEventEverybodyListens(benchmark::State& state) {
    const auto root = makeAgents(state.range(0));
    attachListeners(*root);
    for (auto _ : state)
        root->sendEvent(AgentEvent::UPDATE);
    countAgents(state);
}
BENCHMARK(sendEventEverybodyListens)->Apply(sizes);

} // namespace
