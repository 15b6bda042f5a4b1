#pragma once

namespace tessarin::dynamics::bullet {

/// What the physics of one file may become, counted as often as its parts are instanced: a file of a few kilobytes can
/// ask for billions. Of a file that asks for more nothing is loaded.
struct LoadLimits {
    double modelInstances = 50000;
    double bodies = 50000;
    double joints = 50000;
    double shapes = 200000;

    /// Of the meshes of all shapes together, vertices included.
    double triangles = 2e7;
};

} // namespace tessarin::dynamics::bullet
