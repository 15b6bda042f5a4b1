#pragma once

#include <dynamics/bullet/Affine.h>

#include <array>
#include <cstddef>
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
    /// Up to two of them may be zero.
    Vector3 halfExtents;
};

struct Sphere {
    double radius;
};

/// Along Y, with one radius along X and one along Z; from end to end it measures height, which may be zero.
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

/// How a surface rubs and bounces.
struct Material {
    double staticFriction = 0.5;
    double dynamicFriction = 0.5;
    double restitution = 0;
};

struct Shape {
    std::variant<Box, Sphere, Cylinder, Capsule, Plane, MeshShape> geometry;

    /// In the frame of the body's node.
    Affine placement;

    std::optional<double> mass;
    std::optional<double> density;

    /// The mass is in the surface and not in what this encloses.
    bool hollow = false;

    std::optional<Material> material;
};

struct RigidBody {
    bool dynamic = true;
    std::optional<double> mass;

    /// The moments about the axes of the mass frame.
    std::optional<Vector3> inertia;

    /// In the frame of the body's node.
    std::optional<Affine> massFrame;

    std::optional<Material> material;
    std::vector<Shape> shapes;
};

/// One `instance_rigid_body`.
struct BodyInstance {
    /// How messages call it.
    std::string label;

    /// The name of the target node in the visual model or, where other bodies have that, one of its own.
    std::string name;

    /// Of the target node; empty if it has none.
    std::string nodeId;

    RigidBody body;

    /// From the target node to the file's world, scale included, up-axis turned.
    Affine nodeToWorld;

    /// Turned with the up-axis.
    Vector3 velocity = {0, 0, 0};

    /// Radians per second, turned with the up-axis.
    Vector3 angularVelocity = {0, 0, 0};
};

/// What one side of a constraint is fixed to.
struct Attachment {
    /// Into Physics::bodies; none for the world.
    std::optional<std::size_t> body;

    /// In the frame of the body's node, or of the world. Without it, that of the other side as the file places it.
    std::optional<Affine> placement;
};

/// Lengths or degrees. Locked where both are equal, free where the lower one is above the upper.
struct Limits {
    Vector3 lower = {0, 0, 0};
    Vector3 upper = {0, 0, 0};
};

/// Per length or per degree.
struct Spring {
    double stiffness = 1;
    double damping = 0;
    double target = 0;
};

/// One `instance_rigid_constraint`.
struct ConstraintInstance {
    /// How messages call it.
    std::string label;

    std::string name;

    /// Limits tell where the second side may go, as seen from the first.
    Attachment first;
    Attachment second;

    bool enabled = true;
    bool interpenetrate = false;
    Limits linear;
    Limits angular;
    std::optional<Spring> linearSpring;
    std::optional<Spring> angularSpring;
};

/// Everything that the physics scenes of a file instance.
struct Physics {
    /// Turned with the up-axis.
    std::optional<Vector3> gravity;

    /// Seconds.
    std::optional<double> timeStep;

    /// In document order.
    std::vector<BodyInstance> bodies;
    std::vector<ConstraintInstance> constraints;
};

} // namespace tessarin::dynamics::bullet::collada
