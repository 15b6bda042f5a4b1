#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace tessarin::bench {

/// What one row of the table counts.
enum class Unit { nanoseconds, bytes, times };

/// One cost of ours beside its floor: the same work in the same run, with nothing of ours in it.
///
/// Both sides are functions for Google Benchmark. A side that prepares something in each iteration, or that measures
/// something other than time, takes its own time and hands it over as manual time: see Stopwatch and setValue.
struct Row {
    const char* name;

    /// How many times its floor our side may cost on a quiet machine.
    double bound;

    void (*ours)(benchmark::State&);
    void (*floor)(benchmark::State&);

    /// What one iteration works through, so that the table can show costs per item.
    std::int64_t items = 1;

    /// The sides hand over their own time or value.
    bool isManual = false;

    Unit unit = Unit::nanoseconds;

    /// For each repetition; 0 lets Google Benchmark choose.
    int iterations = 0;
};

/// All rows.
std::vector<Row>& getRows();

/// A static object of this type puts a row into the table.
struct RowRegistration {
    explicit RowRegistration(const Row& row) { getRows().push_back(row); }
};

/// The processor time that this process has used, in seconds. It does not count the time in which other processes had
/// the processor.
double processorSeconds();

/// Takes the processor time between its construction and stop().
class Stopwatch {
public:
    Stopwatch() : begin(processorSeconds()) {}
    double stop() const { return processorSeconds() - begin; }

private:
    double begin;
};

/// Hands over a value that is no time, in the place of the time of an iteration.
inline void setValue(benchmark::State& state, double value) {
    state.SetIterationTime(value * 1e-9);
}

} // namespace tessarin::bench
