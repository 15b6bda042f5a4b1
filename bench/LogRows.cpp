// A message at a level that is off, beside a flag that is off.

#include <bench/Row.h>

#include <logging/Log.h>
#include <logging/Logger.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Counts what is allocated in this program, so that a row can say that nothing is.
std::size_t allocations = 0;

} // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* const memory = std::malloc(size > 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace tessarin::bench {

using logging::Logger;

namespace {

void logNothing(benchmark::State& state) {
    static log4cpp::Category* const category = Logger::instance()->getCategory("bench", true);
    int number = 0;
    const std::size_t before = allocations;
    for (auto _ : state) {
        benchmark::DoNotOptimize(++number);
        TESSARIN_LOG(category, Logger::infoLevel, "number " << number);
    }
    if (allocations != before) {
        state.SkipWithError("A message that is off has allocated memory.");
    }
}

void testFlag(benchmark::State& state) {
    static std::atomic<int> level = 0;
    int number = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(++number);
        if (level.load(std::memory_order_relaxed) > 0) {
            benchmark::ClobberMemory();
        }
    }
}

const RowRegistration row({"log_off", 3.0, logNothing, testFlag});

} // namespace

} // namespace tessarin::bench
