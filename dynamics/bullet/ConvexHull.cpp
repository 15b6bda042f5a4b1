#include <dynamics/bullet/ConvexHull.h>

#include <dynamics/bullet/BulletConversions.h>

#include <LinearMath/btConvexHullComputer.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace tessarin::dynamics::bullet {

namespace {

/// Every corner costs at every contact, so a finely tessellated ball isn't taken as it is.
constexpr std::size_t maxCorners = 256;

struct Bounds {
    Vector3 lower;
    Vector3 upper;

    Vector3 centre() const { return (lower + upper) * 0.5; }
    Vector3 halfExtents() const { return (upper - lower) * 0.5; }
};

Bounds boundsOf(const std::vector<Vector3>& points) {
    Bounds bounds = {points[0], points[0]};
    for (const Vector3& point : points) {
        for (std::size_t i = 0; i < 3; ++i) {
            bounds.lower[i] = std::min(bounds.lower[i], point[i]);
            bounds.upper[i] = std::max(bounds.upper[i], point[i]);
        }
    }
    return bounds;
}

/// The engine counts in single precision, so it gets the points from their middle.
/// @return by how much the faces have moved inwards; negative if nothing is left.
double compute(btConvexHullComputer& computer, const std::vector<Vector3>& points, const Vector3& middle,
               double shrink) {
    std::vector<double> coordinates;
    coordinates.reserve(points.size() * 3);
    for (const Vector3& point : points) {
        const Vector3 offset = point - middle;
        coordinates.insert(coordinates.end(), offset.begin(), offset.end());
    }
    // Shrinking stops halfway to the middle, before the hull turns inside out.
    return computer.compute(coordinates.data(), static_cast<int>(3 * sizeof(double)), static_cast<int>(points.size()),
                            static_cast<btScalar>(shrink), 0.5F);
}

} // namespace

ConvexHull::ConvexHull(const std::vector<Vector3>& points) : corners(points) {
    btConvexHullComputer computer;
    compute(computer, corners, boundsOf(corners).centre(), 0);
    std::set<int> originals;
    for (int i = 0; i < computer.original_vertex_index.size(); ++i) {
        originals.insert(computer.original_vertex_index[i]);
    }
    std::vector<Vector3> kept;
    for (const int original : originals) {
        if (original >= 0 && original < static_cast<int>(points.size())) {
            kept.push_back(points[static_cast<std::size_t>(original)]);
        }
    }
    if (!kept.empty()) {
        corners = kept;
    }
    if (corners.size() > maxCorners) {
        thinOut();
    }
    const Vector3 half = boundsOf(corners).halfExtents();
    smallestHalfExtent = *std::min_element(half.begin(), half.end());
    largestHalfExtent = *std::max_element(half.begin(), half.end());
    computeMass();
}

void ConvexHull::thinOut() {
    // The furthest corner in each of many directions, spread evenly over the sphere by the golden angle.
    std::set<std::size_t> chosen;
    for (std::size_t i = 0; i < maxCorners; ++i) {
        const double z = 1 - (2 * static_cast<double>(i) + 1) / static_cast<double>(maxCorners);
        const double angle = 2.39996322972865332 * static_cast<double>(i);
        const double radius = std::sqrt(1 - z * z);
        const Vector3 direction = {radius * std::cos(angle), radius * std::sin(angle), z};
        const auto furthest = std::max_element(corners.begin(), corners.end(), [&](const Vector3& a, const Vector3& b) {
            return dot(a, direction) < dot(b, direction);
        });
        chosen.insert(static_cast<std::size_t>(furthest - corners.begin()));
    }
    std::vector<Vector3> kept;
    for (const std::size_t index : chosen) {
        kept.push_back(corners[index]);
    }
    corners = kept;
}

void ConvexHull::computeMass() {
    const Bounds bounds = boundsOf(corners);
    btConvexHullComputer computer;
    compute(computer, corners, bounds.centre(), 0);
    SurfaceMass surface;
    ShellMass thinShell;
    for (int face = 0; face < computer.faces.size(); ++face) {
        const btConvexHullComputer::Edge* const first = &computer.edges[computer.faces[face]];
        const Vector3 start = fromBullet(computer.vertices[first->getSourceVertex()]);
        for (const auto* edge = first->getNextEdgeOfFace(); edge->getTargetVertex() != first->getSourceVertex();
             edge = edge->getNextEdgeOfFace()) {
            const Vector3 source = fromBullet(computer.vertices[edge->getSourceVertex()]);
            const Vector3 target = fromBullet(computer.vertices[edge->getTargetVertex()]);
            surface.addTriangle(start, source, target);
            thinShell.addTriangle(start, source, target);
        }
    }
    mass = surface.get();
    const double size = std::max(largestHalfExtent, 1e-6);
    flat = !(std::abs(mass.mass) > 1e-6 * size * size * size);
    if (flat) {
        Vector3 half = bounds.halfExtents();
        for (double& extent : half) {
            extent = std::max(extent, 1e-3 * size);
        }
        mass = boxMass(half);
    } else if (mass.mass < 0) {
        mass = {-mass.mass, mass.centre, mass.covariance * -1};
    }
    shell = flat ? mass : thinShell.get();
    mass.centre = mass.centre + bounds.centre();
    shell.centre = shell.centre + bounds.centre();
}

std::unique_ptr<btConvexHullShape> ConvexHull::makeShape(const Affine& toFrame, double margin) const {
    std::vector<Vector3> points;
    points.reserve(corners.size());
    for (const Vector3& corner : corners) {
        points.push_back(transformPoint(toFrame, corner));
    }
    double marginAround = 1e-3 * largestHalfExtent;
    if (!flat) {
        // The margin is added around the corners, so these move inwards by as much.
        const Vector3 middle = boundsOf(points).centre();
        btConvexHullComputer computer;
        const double shrunkBy = compute(computer, points, middle, margin);
        if (shrunkBy > 0 && computer.vertices.size() > 0) {
            marginAround = shrunkBy;
            points.clear();
            for (int i = 0; i < computer.vertices.size(); ++i) {
                points.push_back(fromBullet(computer.vertices[i]) + middle);
            }
        }
    }
    auto shape = std::make_unique<btConvexHullShape>();
    for (const Vector3& point : points) {
        shape->addPoint(toBullet(point), false);
    }
    shape->recalcLocalAabb();
    shape->setMargin(static_cast<btScalar>(marginAround));
    return shape;
}

} // namespace tessarin::dynamics::bullet
