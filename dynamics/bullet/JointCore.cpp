#include <dynamics/bullet/JointCore.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/BulletConversions.h>
#include <dynamics/bullet/WorldCore.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tessarin::dynamics::bullet {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double radiansPerDegree = pi / 180;
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Lengths and degrees beyond this are never reached, and some exporters write the largest number there is for
/// infinity.
constexpr double farthestLimit = 1e12;

/// What part of a velocity a spring may take away in one step. A stiffer one is softened to that and damped, or it
/// would blow up.
constexpr double stiffestSpring = 0.5;

/// A light body far from its hinge needs that many to follow a motor.
constexpr int solverIterations = 50;

/// How much of what the attachments are apart is taken back in one step.
constexpr btScalar recovery = 0.4F;

/// Limits with what is never reached as infinity. Two of one sign leave nothing to reach, which nobody means.
JointLimits reachableLimits(double lower, double upper) {
    const auto reachable = [](double limit) {
        return std::abs(limit) > farthestLimit ? std::copysign(infinity, limit) : limit;
    };
    const JointLimits limits = {reachable(lower), reachable(upper)};
    const bool holds = limits.lower < infinity && limits.upper > -infinity && lower <= upper;
    return holds ? limits : JointLimits{-infinity, infinity};
}

JointLimits angularLimits(double givenLower, double givenUpper) {
    const auto [lower, upper] = reachableLimits(givenLower, givenUpper);
    // A stop on one side only would be met again from behind after a turn, so the other one is half a turn away.
    const double low = std::isfinite(lower) || !std::isfinite(upper) ? lower : std::min(upper, 0.0) - 180;
    const double high = std::isfinite(upper) || !std::isfinite(lower) ? upper : std::max(lower, 0.0) + 180;
    if (high - low >= 360) {
        return {-infinity, infinity};
    }
    return {low * radiansPerDegree, high * radiansPerDegree};
}

/// The engine keeps the axis in the middle of its order within a quarter turn, so that has to be the narrowest.
RotateOrder orderFor(const collada::Limits& angular) {
    std::array<double, 3> width{};
    for (std::size_t i = 0; i < 3; ++i) {
        const JointLimits limits = angularLimits(angular.lower[i], angular.upper[i]);
        width[i] = limits.upper - limits.lower;
    }
    constexpr std::array<RotateOrder, 3> byMiddle = {RO_YXZ, RO_XYZ, RO_XZY};
    // Where all are alike, X and Z are the ones that may be wide.
    std::size_t middle = 1;
    for (const std::size_t i : {std::size_t(0), std::size_t(2)}) {
        middle = width[i] < width[middle] ? i : middle;
    }
    return byMiddle[middle];
}

btTransform frameInBody(const JointCore::Side& side) {
    return toBullet(side.body ? rigidInverse(side.body->getMassFrame()) * side.frame : side.frame);
}

btRigidBody& engineBody(BulletBody* body, WorldCore& core) {
    return body ? body->getRigidBody() : core.getGround();
}

/// What resists a push along an axis through a point, with both bodies free.
double inverseMassAt(const btRigidBody& body, const btVector3& point, const btVector3& axis) {
    const btVector3 arm = (point - body.getCenterOfMassPosition()).cross(axis);
    return body.getInvMass() + arm.dot(body.getInvInertiaTensorWorld() * arm);
}

/// @param inverseMass of all that moves.
double springForce(const collada::Spring& spring, double off, double velocity, double inverseMass, double seconds) {
    const double taken = seconds * (seconds * spring.stiffness + spring.damping) * inverseMass;
    const double softened = taken > stiffestSpring ? stiffestSpring / taken : 1;
    const double damping = spring.damping + (1 - softened) * seconds * spring.stiffness;
    return -(spring.stiffness * off + damping * velocity) * softened;
}

} // namespace

JointCore::JointCore(std::shared_ptr<WorldCore> worldCore, const collada::ConstraintInstance& description,
                     const Side& firstSide, const Side& secondSide)
    : core(std::move(worldCore)), first(firstSide.body), second(secondSide.body), enabled(description.enabled) {
    btRigidBody& a = engineBody(first, *core);
    btRigidBody& b = engineBody(second, *core);
    constraint = std::make_unique<JointConstraint>(a, b, frameInBody(firstSide), frameInBody(secondSide),
                                                   orderFor(description.angular));
    constraint->setOverrideNumSolverIterations(solverIterations);
    setLimits(description);
    setSprings(description);
    constraint->setEnabled(enabled);
    for (BulletBody* body : {first, second}) {
        if (body) {
            body->addJoint(*this);
        }
    }
    isInEngine = !a.isStaticObject() || !b.isStaticObject();
    if (isInEngine) {
        core->add(*constraint, description.interpenetrate && first && second);
        if (!springs.empty()) {
            core->addSprung(*this);
        }
    }
    wake();
}

JointCore::~JointCore() {
    disconnect();
}

void JointCore::disconnect() {
    if (!constraint) {
        return;
    }
    wake();
    if (isInEngine) {
        core->remove(*constraint);
        if (!springs.empty()) {
            core->removeSprung(*this);
        }
    }
    for (BulletBody** body : {&first, &second}) {
        if (*body) {
            (*body)->removeJoint(*this);
        }
        *body = nullptr;
    }
    constraint.reset();
}

void JointCore::setLimits(const collada::ConstraintInstance& description) {
    for (std::size_t i = 0; i < 3; ++i) {
        limits[i] = reachableLimits(description.linear.lower[i], description.linear.upper[i]);
        limits[3 + i] = angularLimits(description.angular.lower[i], description.angular.upper[i]);
    }
    for (std::size_t axis = 0; axis < 6; ++axis) {
        applyLimit(axis);
        constraint->setParam(BT_CONSTRAINT_STOP_ERP, recovery, static_cast<int>(axis));
    }
}

void JointCore::applyLimit(std::size_t axis) {
    JointLimits limit = limits[axis];
    if (limit.lower == -infinity && limit.upper == infinity) {
        limit = {1, -1};
    }
    const auto finite = [](double value) { return static_cast<btScalar>(std::clamp(value, -1e18, 1e18)); };
    if (axis < 3) {
        const auto index = static_cast<int>(axis);
        constraint->getTranslationalLimitMotor()->m_lowerLimit[index] = finite(limit.lower);
        constraint->getTranslationalLimitMotor()->m_upperLimit[index] = finite(limit.upper);
    } else {
        // Past the setters, which bring each limit into one turn by itself.
        btRotationalLimitMotor2& motor = *constraint->getRotationalLimitMotor(static_cast<int>(axis - 3));
        motor.m_loLimit = limit.lower > limit.upper ? btScalar(1) : finite(-limit.upper);
        motor.m_hiLimit = limit.lower > limit.upper ? btScalar(-1) : finite(-limit.lower);
    }
}

void JointCore::setSprings(const collada::ConstraintInstance& description) {
    const auto addFor = [&](std::size_t begin, const std::optional<collada::Spring>& spring, double unit) {
        // One resting distance for three axes: it is along the first that may move.
        double target = spring ? spring->target * unit : 0;
        for (std::size_t axis = begin; spring && axis < begin + 3; ++axis) {
            if (isLocked(axis)) {
                continue;
            }
            springs.push_back({axis, {spring->stiffness / unit, spring->damping / unit, target}});
            target = 0;
        }
    };
    addFor(0, description.linearSpring, 1);
    addFor(3, description.angularSpring, radiansPerDegree);
}

Affine JointCore::getFirstFrame() const {
    return constraint ? fromBullet(constraint->getRigidBodyA().getWorldTransform() * constraint->getFrameOffsetA())
                      : Affine();
}

Affine JointCore::getSecondFrame() const {
    return constraint ? fromBullet(constraint->getRigidBodyB().getWorldTransform() * constraint->getFrameOffsetB())
                      : Affine();
}

void JointCore::setEnabled(bool shouldHold) {
    enabled = shouldHold;
    if (constraint) {
        constraint->setEnabled(shouldHold);
        constraint->forgetPushes();
        wake();
    }
}

double JointCore::getPosition(std::size_t axis) const {
    if (!constraint) {
        return 0;
    }
    constraint->calculateTransforms();
    if (axis < 3) {
        return constraint->getRelativePivotPosition(static_cast<int>(axis));
    }
    const double angle = -static_cast<double>(constraint->getAngle(static_cast<int>(axis - 3)));
    const double middle = std::isfinite(limits[axis].lower) ? (limits[axis].lower + limits[axis].upper) / 2 : 0;
    return middle + std::remainder(angle - middle, 2 * pi);
}

bool JointCore::isNew(std::size_t axis, const Motor& motor) {
    Motor& present = motors[axis];
    const bool isSame = motor.kind == present.kind && motor.position == present.position &&
                        motor.velocity == present.velocity && motor.maxForce == present.maxForce;
    present = motor;
    return !isSame;
}

void JointCore::runMotor(std::size_t axis, double velocity, double maxForce) {
    if (!isNew(axis, {Motor::RUNS, 0, velocity, maxForce})) {
        return;
    }
    const auto index = static_cast<int>(axis);
    constraint->enableMotor(index, true);
    constraint->setServo(index, false);
    // The engine counts velocities from the second side to the first.
    constraint->setTargetVelocity(index, static_cast<btScalar>(-velocity));
    constraint->setMaxMotorForce(index, static_cast<btScalar>(maxForce / core->getMassUnit().get()));
    wake();
}

void JointCore::holdMotor(std::size_t axis, double position, double maxVelocity, double maxForce) {
    if (!isNew(axis, {Motor::HOLDS, position, maxVelocity, maxForce})) {
        return;
    }
    const auto index = static_cast<int>(axis);
    constraint->enableMotor(index, true);
    constraint->setServo(index, true);
    constraint->setServoTarget(index, static_cast<btScalar>(axis < 3 ? position : -position));
    constraint->setTargetVelocity(index, static_cast<btScalar>(maxVelocity));
    constraint->setMaxMotorForce(index, static_cast<btScalar>(maxForce / core->getMassUnit().get()));
    wake();
}

void JointCore::stopMotor(std::size_t axis) {
    if (constraint && isNew(axis, Motor())) {
        constraint->enableMotor(static_cast<int>(axis), false);
        constraint->setServo(static_cast<int>(axis), false);
        wake();
    }
}

void JointCore::pushSprings(double seconds) {
    const btRigidBody& a = constraint->getRigidBodyA();
    const btRigidBody& b = constraint->getRigidBodyB();
    if (!enabled || !(a.isActive() || b.isActive())) {
        return;
    }
    constraint->calculateTransforms();
    for (const AxisSpring& spring : springs) {
        if (spring.axis < 3) {
            pushLinear(spring, seconds);
        } else {
            pushAngular(spring, seconds);
        }
    }
}

void JointCore::pushLinear(const AxisSpring& axisSpring, double seconds) {
    btRigidBody& a = constraint->getRigidBodyA();
    btRigidBody& b = constraint->getRigidBodyB();
    const auto index = static_cast<int>(axisSpring.axis);
    const btVector3 axis = constraint->getCalculatedTransformA().getBasis().getColumn(index);
    const btVector3 point = constraint->getCalculatedTransformB().getOrigin();
    const btVector3 armA = point - a.getCenterOfMassPosition();
    const btVector3 armB = point - b.getCenterOfMassPosition();
    const btVector3 speed = b.getVelocityInLocalPoint(armB) - a.getVelocityInLocalPoint(armA);
    const double off = constraint->getRelativePivotPosition(index) - axisSpring.spring.target;
    const double unit = core->getMassUnit().get();
    const double inverseMass = (inverseMassAt(a, point, axis) + inverseMassAt(b, point, axis)) / unit;
    const double force = springForce(axisSpring.spring, off, axis.dot(speed), inverseMass, seconds);
    const btVector3 push = axis * static_cast<btScalar>(force / unit);
    b.applyForce(push, armB);
    a.applyForce(-push, armA);
}

void JointCore::pushAngular(const AxisSpring& axisSpring, double seconds) {
    btRigidBody& a = constraint->getRigidBodyA();
    btRigidBody& b = constraint->getRigidBodyB();
    const btVector3 axis = constraint->getAxis(static_cast<int>(axisSpring.axis - 3));
    const double speed = axis.dot(b.getAngularVelocity() - a.getAngularVelocity());
    const double off = getPosition(axisSpring.axis) - axisSpring.spring.target;
    const double unit = core->getMassUnit().get();
    const double inverseInertia =
        (axis.dot(a.getInvInertiaTensorWorld() * axis) + axis.dot(b.getInvInertiaTensorWorld() * axis)) / unit;
    const double torque = springForce(axisSpring.spring, off, speed, inverseInertia, seconds);
    const btVector3 push = axis * static_cast<btScalar>(torque / unit);
    b.applyTorque(push);
    a.applyTorque(-push);
}

void JointCore::wake() {
    for (BulletBody* body : {first, second}) {
        if (body) {
            body->getRigidBody().activate(true);
        }
    }
}

} // namespace tessarin::dynamics::bullet
