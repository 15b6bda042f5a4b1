#pragma once

#include <agent/Export.h>

#include <vector>

namespace tessarin::agent {

/// Which thresholds a joystick axis has crossed since the moves were last cleared, upwards and downwards each: exact
/// for any threshold, however often the value went up and down. Keeps only what the moves have covered, so it stays
/// small, and it allocates nothing once it has grown. A value that is not a number is above no threshold.
class TESSARIN_AGENT_EXPORT AxisMoves {
public:
    void add(float from, float to);
    void clear();

    /// Whether the value went from at most the threshold to above it.
    bool roseAbove(float threshold) const;

    /// Whether the value went from above the threshold to at most it.
    bool cameBackTo(float threshold) const;

private:
    struct Interval {
        float low;
        float high;
    };
    using Intervals = std::vector<Interval>; // half open, apart from each other, in ascending order

    static void cover(Intervals& intervals, Interval added);
    static bool covers(const Intervals& intervals, float threshold);

    Intervals rises;
    Intervals falls;
};

} // namespace tessarin::agent
