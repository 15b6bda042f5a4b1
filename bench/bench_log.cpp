// A message that is not enabled, beside nothing.

#include <logging/Log.h>
#include <logging/Logger.h>

#include <benchmark/benchmark.h>

using tessarin::logging::Logger;

namespace {

void floorEmptyLoop(benchmark::State& state) {
    int number = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(++number);
}
BENCHMARK(floorEmptyLoop);

void disabledMessage(benchmark::State& state) {
    log4cpp::Category* const category = Logger::instance()->getCategory("bench", true);
    int number = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(++number);
        TESSARIN_LOG(category, Logger::infoLevel, "number " << number);
    }
}
BENCHMARK(disabledMessage);

} // namespace
