#pragma once

#include <dynamics/bullet/Export.h>

#include <gmtl/Matrix.h>
#include <gmtl/Vec.h>

namespace tessarin::dynamics::bullet {

/// What each body of a BulletDynamicsWorld offers beyond DynamicsBody, reached by a run-time cast from it: what pulls
/// and pushes need, those of a hand or of a thruster for example.
///
/// All in the world's frame and units. Everything here may be called at any time outside BulletDynamicsWorld::step, on
/// the thread of the world. What the body is now is what the last step left, or what was set since.
class TESSARIN_DYNAMICS_BULLET_EXPORT BulletBodyControl {
public:
    BulletBodyControl(const BulletBodyControl&) = delete;
    BulletBodyControl& operator=(const BulletBodyControl&) = delete;

    /// False for a body that stays where it is put.
    virtual bool isMovable() const = 0;

    /// More than zero; zero for a body that is not movable.
    virtual double getMass() const = 0;

    virtual gmtl::Vec<double, 3> getCentreOfMass() const = 0;

    /// Per second, of the centre of mass.
    virtual gmtl::Vec<double, 3> getLinearVelocity() const = 0;

    /// Radians per second.
    virtual gmtl::Vec<double, 3> getAngularVelocity() const = 0;

    /// Where the body was within the last fixed step, for pictures that come at other times than steps. What was put
    /// somewhere since, and what sleeps, has been there all the time.
    /// @param part from 0, where the step began, to 1, which is DynamicsBody::getMatrix.
    virtual gmtl::Matrix<double, 4, 4> getPoseBetween(double part) const = 0;

    /// Changes the velocities at once, as a blow does, and wakes the body. A force that is to act during a step is its
    /// product with the seconds of the step, given before each step. A body that is not movable, and numbers that are
    /// not finite, are left alone.
    /// @param impulse mass times velocity.
    /// @param point where it acts, in the world; away from the centre of mass it turns the body too.
    virtual void applyImpulse(const gmtl::Vec<double, 3>& impulse, const gmtl::Vec<double, 3>& point) = 0;

    /// Changes the angular velocity at once. Else as applyImpulse.
    /// @param impulse moment of inertia times angular velocity.
    virtual void applyAngularImpulse(const gmtl::Vec<double, 3>& impulse) = 0;

protected:
    BulletBodyControl() = default;
    virtual ~BulletBodyControl() = default;
};

} // namespace tessarin::dynamics::bullet
