#pragma once

#include <dynamics/bullet/BodyShape.h>
#include <dynamics/bullet/SolidPiece.h>

#include <memory>

namespace tessarin::dynamics::bullet {

/// How deep into a shape its collision margin may reach, by the half extent of the shape where it is narrowest.
double marginFor(double size);

/// A collision shape and its place in the frame it was made for.
struct PlacedShape {
    std::unique_ptr<btCollisionShape> shape;

    /// Rigid.
    Affine place;
};

/// The collision shape of a piece. Meshes, hulls and planes are made to stand in the frame itself.
/// @param toFrame rigid.
/// @param body keeps what the shape refers to.
PlacedShape makeCollisionShape(const SolidPiece& piece, const Affine& toFrame, BodyShape& body);

} // namespace tessarin::dynamics::bullet
