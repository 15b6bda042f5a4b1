#pragma once

#include <btBulletCollisionCommon.h>

#include <vector>

namespace tessarin::dynamics::bullet {

/// The box along the axes of the world that holds a body.
struct Bounds {
    btVector3 low;
    btVector3 high;
    bool isMovable = false;
};

/// How many pairs of bodies meet with their bounds, two that can't move left out. The engine keeps a record of each
/// such pair from the moment on at which it is given the bodies.
/// @param most at which counting ends.
double countMeetings(std::vector<Bounds> bodies, double most);

} // namespace tessarin::dynamics::bullet
