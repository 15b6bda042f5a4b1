#pragma once

#include <dynamics/bullet/BodyShape.h>
#include <dynamics/bullet/ColladaPhysics.h>
#include <dynamics/bullet/SolidPiece.h>

namespace tessarin::dynamics::bullet {

/// Makes the shape and the mass of a body.
/// @param scale the stretch in the world placement of the body's node.
/// @return without parts if nothing of the description can be used, which has been reported.
BodyShape buildBodyShape(const collada::RigidBody& description, const Matrix3& scale, const Report& report);

} // namespace tessarin::dynamics::bullet
