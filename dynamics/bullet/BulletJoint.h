#pragma once

#include <dynamics/DynamicsJoint.h>
#include <dynamics/bullet/Export.h>

#include <gmtl/Matrix.h>

#include <memory>

namespace tessarin::dynamics {
class DynamicsBody;
}

namespace tessarin::dynamics::bullet {

class JointCore;

/// The six ways in which a joint may let its second attachment move against its first one: along and about the axes of
/// the first.
enum class JointAxis { translationX, translationY, translationZ, rotationX, rotationY, rotationZ };

/// How far an axis may go: locked where both are equal, free where they are infinite. Radians or the world's lengths.
struct JointLimits {
    double lower = 0;
    double upper = 0;
};

/// What all joints of a BulletDynamicsWorld have in common, reached by a run-time cast from DynamicsJoint.
///
/// Positions are those of the second attachment as seen from the first one: lengths of the world for translations,
/// radians for rotations, right-handed about the axis. Velocities are these per second; forces are forces for
/// translations and torques for rotations.
///
/// A joint that has lost a body is inert: positions are zero, limits are those that it had, and motors take nothing.
/// Everything here may be called at any time outside BulletDynamicsWorld::step, on the thread of the world.
class TESSARIN_DYNAMICS_BULLET_EXPORT BulletJoint {
public:
    virtual ~BulletJoint();

    BulletJoint(const BulletJoint&) = delete;
    BulletJoint& operator=(const BulletJoint&) = delete;

    /// False once one of its bodies is gone.
    bool isConnected() const;

    /// The body of the first (`ref_attachment`) or of the second (`attachment`) side. Null stands for the world, and
    /// for both sides of a joint that is inert.
    DynamicsBody* getFirstBody() const;
    DynamicsBody* getSecondBody() const;

    /// Where the attachments are in the world. The identity if the joint is inert.
    gmtl::Matrix<double, 4, 4> getFirstFrame() const;
    gmtl::Matrix<double, 4, 4> getSecondFrame() const;

    /// A joint that is not enabled holds nothing. Wakes the bodies.
    bool isEnabled() const;
    void setEnabled(bool enabled);

    /// The axis that a joint with a single free one has; of others the first that is not locked, rotations before
    /// translations, and rotationX if all are locked.
    JointAxis getMainAxis() const;

    /// Rotations are within half a turn of the middle of their limits.
    double getPosition(JointAxis axis) const;
    JointLimits getLimits(JointAxis axis) const;

    /// Lets a motor bring an axis to a velocity with at most that force. Wakes the bodies, but for a motor that does
    /// just that already, so it may be called before each step. A locked axis, and numbers that are not finite or a
    /// force below zero, are answered with false and change nothing.
    bool setMotorVelocity(JointAxis axis, double velocity, double maxForce);

    /// Lets a motor bring an axis to a position and hold it there, at most that fast and with at most that force. Wakes
    /// the bodies and answers as setMotorVelocity.
    bool setMotorPosition(JointAxis axis, double position, double maxVelocity, double maxForce);

    /// The axis moves as its limits and springs let it.
    void switchMotorOff(JointAxis axis);

protected:
    explicit BulletJoint(std::unique_ptr<JointCore> core);

private:
    std::unique_ptr<JointCore> core;
};

/// One free rotation: getMainAxis() tells which.
class TESSARIN_DYNAMICS_BULLET_EXPORT BulletRevoluteJoint : public DynamicsRevoluteJoint, public BulletJoint {
public:
    explicit BulletRevoluteJoint(std::unique_ptr<JointCore> core);
    ~BulletRevoluteJoint() override;

    /// Radians.
    double getAngle() const { return getPosition(getMainAxis()); }
};

/// One free translation: getMainAxis() tells which.
class TESSARIN_DYNAMICS_BULLET_EXPORT BulletPrismaticJoint : public DynamicsPrismaticJoint, public BulletJoint {
public:
    explicit BulletPrismaticJoint(std::unique_ptr<JointCore> core);
    ~BulletPrismaticJoint() override;

    double getDisplacement() const { return getPosition(getMainAxis()); }
};

/// Any other number of free axes, none and all included.
class TESSARIN_DYNAMICS_BULLET_EXPORT BulletD6Joint : public DynamicsD6Joint, public BulletJoint {
public:
    explicit BulletD6Joint(std::unique_ptr<JointCore> core);
    ~BulletD6Joint() override;
};

} // namespace tessarin::dynamics::bullet
