#pragma once

#include <dynamics/bullet/Affine.h>
#include <dynamics/bullet/MassDistribution.h>

#include <btBulletCollisionCommon.h>

#include <memory>
#include <vector>

namespace tessarin::dynamics::bullet {

/// The convex hull of a cloud of points.
class ConvexHull {
public:
    /// Points inside are dropped, and of a hull with very many corners those that matter least.
    explicit ConvexHull(const std::vector<Vector3>& points);

    /// Of density 1.
    const MassDistribution& getMass() const { return mass; }

    /// Of the surface alone.
    const MassDistribution& getShell() const { return shell; }

    /// Half of what the hull measures along the narrowest axis and along the widest.
    double getSmallestHalfExtent() const { return smallestHalfExtent; }
    double getLargestHalfExtent() const { return largestHalfExtent; }

    std::size_t getCornerCount() const { return corners.size(); }

    /// A flat hull gets the solid of a thin plate for its mass.
    bool isFlat() const { return flat; }

    /// A shape whose surface, collision margin included, is the hull as it stands in the frame given.
    /// @param toFrame rigid.
    /// @param margin how much of the hull is to be margin; a narrow hull takes less.
    std::unique_ptr<btConvexHullShape> makeShape(const Affine& toFrame, double margin) const;

private:
    void thinOut();
    void computeMass();

    std::vector<Vector3> corners;
    MassDistribution mass;
    MassDistribution shell;
    double smallestHalfExtent = 0;
    double largestHalfExtent = 0;
    bool flat = false;
};

} // namespace tessarin::dynamics::bullet
