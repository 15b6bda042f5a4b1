#include <dynamics/bullet/MeetingBounds.h>

#include <algorithm>

namespace tessarin::dynamics::bullet {

namespace {

bool meet(const Bounds& a, const Bounds& b) {
    return (a.isMovable || b.isMovable) && TestAabbAgainstAabb2(a.low, a.high, b.low, b.high);
}

/// The axis along which the bodies that move lie farthest apart.
int findWidestAxis(const std::vector<Bounds>& bodies) {
    btVector3 low(BT_LARGE_FLOAT, BT_LARGE_FLOAT, BT_LARGE_FLOAT), high = -low;
    for (const Bounds& body : bodies) {
        if (body.isMovable) {
            low.setMin(body.low);
            high.setMax(body.low);
        }
    }
    return (high - low).maxAxis();
}

} // namespace

double countMeetings(std::vector<Bounds> bodies, double most) {
    const int axis = findWidestAxis(bodies);
    std::sort(bodies.begin(), bodies.end(),
              [&](const Bounds& a, const Bounds& b) { return a.low[axis] < b.low[axis]; });
    double meetings = 0;
    for (auto first = bodies.begin(); first != bodies.end() && meetings <= most; ++first) {
        for (auto second = first + 1; second != bodies.end() && second->low[axis] <= first->high[axis]; ++second) {
            meetings += meet(*first, *second) ? 1 : 0;
        }
    }
    return meetings;
}

} // namespace tessarin::dynamics::bullet
