#pragma once

#include <agent/BehaviourComponent.h>

#include <benchmark/benchmark.h>

namespace tessarin::bench {

/// A component that listens to AgentEvent::UPDATE and does next to nothing.
class Listener : public agent::BehaviourComponent {
public:
    const char* getClassName() override { return "Listener"; }

    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) override {
        events.push_back(agent::AgentEvent::UPDATE);
        return true;
    }

    void update() override { benchmark::DoNotOptimize(++calls); }

private:
    std::int64_t calls = 0;
};

} // namespace tessarin::bench
