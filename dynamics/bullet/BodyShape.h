#pragma once

#include <dynamics/bullet/Affine.h>

#include <btBulletCollisionCommon.h>

#include <memory>
#include <vector>

namespace tessarin::dynamics::bullet {

/// What a rigid body is made of: its collision shape with all that this refers to, and its mass.
///
/// The engine wants a body's origin at its centre of mass and its inertia along its axes. So shapes are in a mass
/// frame, which stands at massFrame in the frame of the body's node.
struct BodyShape {
    /// The corners of a triangle mesh; the mesh refers to them.
    struct Triangles {
        std::vector<float> vertices;
        std::vector<int> indices;
        btTriangleIndexVertexArray interface;
    };

    Affine massFrame;

    /// Zero for a static body.
    double mass = 0;
    Vector3 inertia = {0, 0, 0};

    /// Half of what the narrowest part of the body measures, the scale for everything that is small against a body.
    double size = 0;

    /// A body without flat sides, which needs friction to stop rolling.
    bool isRound = false;

    // In this order: a shape goes before what it refers to.
    std::vector<std::unique_ptr<Triangles>> triangles;
    std::vector<std::unique_ptr<btCollisionShape>> parts;

    /// The shape of the whole body; the last of the parts.
    btCollisionShape* whole() const { return parts.empty() ? nullptr : parts.back().get(); }
};

} // namespace tessarin::dynamics::bullet
