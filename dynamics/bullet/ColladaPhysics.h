#pragma once

#include <dynamics/bullet/Affine.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// @file
/// The physics of a COLLADA file as plain data: references resolved, overrides applied, nodes placed. Lengths and axes
/// are those of the world, but shapes are in the frame of their target node, its scale not yet applied.

namespace tessarin::dynamics::bullet::collada {

/// A triangle mesh in its geometry's own coordinates. Without triangles it is a cloud of points.
struct Mesh {
    std::vector<Vector3> vertices;
    std::vector<std::array<unsigned, 3>> triangles;
};

struct Box {
    Vector3 halfExtents;
};

struct Sphere {
    double radius;
};

/// Along Y, with one radius along X and one along Z; from end to end it measures height.
struct Cylinder {
    std::array<double, 2> radius;
    double height;
};

/// As a cylinder of that height with half a ball at each end.
struct Capsule {
    std::array<double, 2> radius;
    double height;
};

/// All points p with dot(normal, p) + offset <= 0 are solid.
struct Plane {
    Vector3 normal;
    double offset;
};

struct MeshShape {
    std::shared_ptr<const Mesh> mesh;

    /// The file says that the hull of the mesh is meant, not its surface.
    bool convex;
};

struct Shape {
    std::variant<Box, Sphere, Cylinder, Capsule, Plane, MeshShape> geometry;

    /// In the frame of the body's node.
    Affine placement;

    std::optional<double> mass;
    std::optional<double> density;
};

struct RigidBody {
    bool dynamic = true;
    std::optional<double> mass;
    std::vector<Shape> shapes;
};

/// One `instance_rigid_body`.
struct BodyInstance {
    /// How messages call it.
    std::string label;

    /// The name of the target node in the visual model.
    std::string name;

    RigidBody body;

    /// From the target node to the file's world, scale included, up-axis turned.
    Affine nodeToWorld;

    /// Turned with the up-axis.
    Vector3 velocity = {0, 0, 0};

    /// Radians per second, turned with the up-axis.
    Vector3 angularVelocity = {0, 0, 0};
};

/// Everything that the physics scenes of a file instance.
struct Physics {
    /// Turned with the up-axis.
    std::optional<Vector3> gravity;

    /// In document order.
    std::vector<BodyInstance> bodies;
};

} // namespace tessarin::dynamics::bullet::collada
