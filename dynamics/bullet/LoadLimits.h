#pragma once

#include <dynamics/bullet/Export.h>

#include <string>

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

    /// Pairs of bodies whose bounds meet at the beginning: bodies that lie in one place make as many as their square.
    double meetings = 1e6;
};

/// What instances, bodies or joints a COLLADA file would become too many of, as a sentence without an end; empty if it
/// keeps to the limits, or can't be read, which is logged. Nothing is made, so a host can ask before it loads.
/// The rest is counted while a file is loaded.
TESSARIN_DYNAMICS_BULLET_EXPORT std::string findExcess(const std::string& filePath, const LoadLimits& limits);

} // namespace tessarin::dynamics::bullet
