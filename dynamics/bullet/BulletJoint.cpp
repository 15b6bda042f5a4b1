#include <dynamics/bullet/BulletJoint.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/JointCore.h>

#include <cmath>
#include <utility>

namespace tessarin::dynamics::bullet {

namespace {

std::size_t indexOf(JointAxis axis) {
    return static_cast<std::size_t>(axis);
}

gmtl::Matrix<double, 4, 4> matrixOf(const Affine& frame) {
    gmtl::Matrix<double, 4, 4> matrix;
    toGmtl(frame, matrix);
    return matrix;
}

} // namespace

BulletJoint::BulletJoint(std::unique_ptr<JointCore> jointCore) : core(std::move(jointCore)) {}

BulletJoint::~BulletJoint() = default;

bool BulletJoint::isConnected() const {
    return core->isConnected();
}

DynamicsBody* BulletJoint::getFirstBody() const {
    return core->getFirst();
}

DynamicsBody* BulletJoint::getSecondBody() const {
    return core->getSecond();
}

gmtl::Matrix<double, 4, 4> BulletJoint::getFirstFrame() const {
    return matrixOf(core->getFirstFrame());
}

gmtl::Matrix<double, 4, 4> BulletJoint::getSecondFrame() const {
    return matrixOf(core->getSecondFrame());
}

bool BulletJoint::isEnabled() const {
    return core->isEnabled();
}

void BulletJoint::setEnabled(bool enabled) {
    core->setEnabled(enabled);
}

JointAxis BulletJoint::getMainAxis() const {
    for (const JointAxis axis : {JointAxis::rotationX, JointAxis::rotationY, JointAxis::rotationZ,
                                 JointAxis::translationX, JointAxis::translationY, JointAxis::translationZ}) {
        if (!core->isLocked(indexOf(axis))) {
            return axis;
        }
    }
    return JointAxis::rotationX;
}

double BulletJoint::getPosition(JointAxis axis) const {
    return core->getPosition(indexOf(axis));
}

JointLimits BulletJoint::getLimits(JointAxis axis) const {
    return core->getLimits(indexOf(axis));
}

bool BulletJoint::setMotorVelocity(JointAxis axis, double velocity, double maxForce) {
    if (!isConnected() || core->isLocked(indexOf(axis)) || !std::isfinite(velocity) ||
        !(maxForce >= 0 && std::isfinite(maxForce))) {
        return false;
    }
    core->runMotor(indexOf(axis), velocity, maxForce);
    return true;
}

bool BulletJoint::setMotorPosition(JointAxis axis, double position, double maxVelocity, double maxForce) {
    if (!isConnected() || core->isLocked(indexOf(axis)) || !std::isfinite(position) ||
        !(maxVelocity >= 0 && std::isfinite(maxVelocity)) || !(maxForce >= 0 && std::isfinite(maxForce))) {
        return false;
    }
    core->holdMotor(indexOf(axis), position, maxVelocity, maxForce);
    return true;
}

void BulletJoint::switchMotorOff(JointAxis axis) {
    core->stopMotor(indexOf(axis));
}

BulletRevoluteJoint::BulletRevoluteJoint(std::unique_ptr<JointCore> jointCore) : BulletJoint(std::move(jointCore)) {}

BulletRevoluteJoint::~BulletRevoluteJoint() = default;

BulletPrismaticJoint::BulletPrismaticJoint(std::unique_ptr<JointCore> jointCore) : BulletJoint(std::move(jointCore)) {}

BulletPrismaticJoint::~BulletPrismaticJoint() = default;

BulletD6Joint::BulletD6Joint(std::unique_ptr<JointCore> jointCore) : BulletJoint(std::move(jointCore)) {}

BulletD6Joint::~BulletD6Joint() = default;

} // namespace tessarin::dynamics::bullet
