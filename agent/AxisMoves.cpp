#include <agent/AxisMoves.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessarin::agent {

namespace {

/// No threshold is below what is not a number, and none is below this.
float orLowest(float value) {
    return std::isnan(value) ? -std::numeric_limits<float>::infinity() : value;
}

} // namespace

void AxisMoves::add(float from, float to) {
    from = orLowest(from);
    to = orLowest(to);
    if (from < to)
        cover(rises, {from, to});
    else if (to < from)
        cover(falls, {to, from});
}

void AxisMoves::clear() {
    rises.clear();
    falls.clear();
}

bool AxisMoves::roseAbove(float threshold) const {
    return covers(rises, threshold);
}

bool AxisMoves::cameBackTo(float threshold) const {
    return covers(falls, threshold);
}

void AxisMoves::cover(Intervals& intervals, Interval added) {
    const auto first = std::find_if(intervals.begin(), intervals.end(),
                                    [&](const Interval& interval) { return interval.high >= added.low; });
    auto last = first;
    for (; last != intervals.end() && last->low <= added.high; ++last) {
        added.low = std::min(added.low, last->low);
        added.high = std::max(added.high, last->high);
    }
    if (first == last) {
        intervals.insert(first, added);
        return;
    }
    *first = added;
    intervals.erase(first + 1, last);
}

bool AxisMoves::covers(const Intervals& intervals, float threshold) {
    return std::any_of(intervals.begin(), intervals.end(), [=](const Interval& interval) {
        return interval.low <= threshold && threshold < interval.high;
    });
}

} // namespace tessarin::agent
