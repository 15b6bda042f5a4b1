#pragma once

#include <dynamics/Export.h>
#include <dynamics/Forward.h>

#include <gmtl/Matrix.h>
#include <gmtl/Quat.h>
#include <gmtl/Vec.h>

#include <string>

namespace tessarin::dynamics {

/// A rigid body of a dynamics world, as far as agents need it: a name, a pose, velocities to reset, and the question
/// whether its pose is worth reading.
///
/// Poses are in the frame and in the units of the world: metres and seconds unless the world says otherwise. Matrices
/// are column-major with the translation in elements 12, 13 and 14; rotations are unit quaternions x, y, z, w.
///
/// A body belongs to whoever got it from DynamicsBodyFunctor::visitBody, usually a component, and may be deleted at any
/// time outside a simulation step, before or after its world.
class TESSARIN_DYNAMICS_EXPORT DynamicsBody {
public:
    virtual ~DynamicsBody() = default;

    /// The name under which an agent is made for the body: that of the scene node that it moves.
    virtual const std::string& getName() = 0;

    /// Keeps a pointer to whoever owns the body. Null takes it away. The body never deletes it.
    virtual void setUserData(DynamicsUserData* userData) = 0;

    /// Fills in the pose: a rotation and a translation, without scale.
    virtual void getMatrix(gmtl::Matrix<double, 4, 4>& matrix) = 0;

    /// Puts the body at a pose at once. Velocities stay as they are.
    virtual void setMatrix(const gmtl::Matrix<double, 4, 4>& matrix) = 0;

    /// Metres per second, in the world's frame.
    virtual void setLinearVelocity(const gmtl::Vec<float, 3>& velocity) = 0;

    /// Radians per second about the world's axes.
    virtual void setAngularVelocity(const gmtl::Vec<float, 3>& velocity) = 0;

    /// Puts the body at a place at once. The rotation stays.
    virtual void setPosition(const gmtl::Vec<double, 3>& position) = 0;

    /// Turns the body at once. The position stays.
    virtual void setRotation(const gmtl::Quat<double>& rotation) = 0;

    /// True if the pose should be copied to the body's agent at the next update. Asked once per frame and component.
    /// Bodies that lie still can tell whether their pose has arrived if they are a PoseSource too.
    virtual bool isActive() = 0;

    /// Announces that the body is about to be moved from outside by setPosition.
    virtual void prepareMove() = 0;

protected:
    DynamicsBody() = default;
    DynamicsBody(const DynamicsBody&) = default;
    DynamicsBody& operator=(const DynamicsBody&) = default;
};

} // namespace tessarin::dynamics
