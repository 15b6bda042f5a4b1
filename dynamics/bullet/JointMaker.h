#pragma once

#include <dynamics/bullet/ColladaPhysics.h>
#include <dynamics/bullet/SolidPiece.h>

#include <dynamics/DynamicsJoint.h>

#include <memory>
#include <vector>

namespace tessarin::dynamics::bullet {

class BulletBody;
class WorldCore;

/// What a body of a file has become.
struct MadeBody {
    /// Null if it was left out.
    BulletBody* body;

    /// The stretch in the placement of its node, which attachments follow as shapes do.
    Matrix3 stretch;
};

/// Null, with one report, if a body that it needs was left out.
/// @param bodies one for each of Physics::bodies.
/// @param placement of the file in the world.
std::unique_ptr<DynamicsJoint> makeJoint(const collada::ConstraintInstance& description,
                                         const std::vector<MadeBody>& bodies, const Affine& placement,
                                         const std::shared_ptr<WorldCore>& core, const Report& report);

} // namespace tessarin::dynamics::bullet
