#pragma once

#include <dynamics/bullet/ColladaPhysics.h>

#include <vector>

namespace tessarin::dynamics::bullet {

/// A ring of points around Y, an ellipse where its radii differ.
struct Ring {
    double y;
    double radiusX;
    double radiusZ;
};

/// The closed surface between rings that rise along Y.
collada::Mesh makeRoundMesh(const std::vector<Ring>& rings, unsigned corners);

/// From the lower to the upper end of what has a half ellipsoid at each end, with so many rings for each of them. The
/// caps are as high as they are wide.
std::vector<Ring> makeCapsuleRings(const std::array<double, 2>& lowerRadius, const std::array<double, 2>& upperRadius,
                                   double height, unsigned ringsPerCap);

} // namespace tessarin::dynamics::bullet
