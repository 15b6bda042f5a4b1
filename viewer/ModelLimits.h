#pragma once

#include <dynamics/bullet/LoadLimits.h>

namespace tessarin::viewer {

/// What a model may become, counted as often as its parts are instanced: a file of a few kilobytes can ask for
/// billions.
struct ModelLimits {
    double nodes = 200000;
    double triangles = 2e7;

    /// Of the physics, in multiples of the usual limits.
    double physics = 1;

    /// How deep nodes may be nested, which costs stack.
    int levels = 1000;

    /// More or less of everything but levels.
    ModelLimits times(double factor) const;

    dynamics::bullet::LoadLimits ofPhysics() const;

    /// @throws ViewerError that says, without the name of a file, what there is too much of.
    void check(double nodeCount, double triangleCount, int levelCount) const;
};

} // namespace tessarin::viewer
