#pragma once

#include <dynamics/bullet/Affine.h>
#include <dynamics/bullet/BulletJoint.h>
#include <dynamics/bullet/ColladaPhysics.h>
#include <dynamics/bullet/JointConstraint.h>

#include <btBulletDynamicsCommon.h>

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace tessarin::dynamics::bullet {

class BulletBody;
class WorldCore;

/// A joint in the engine, behind the classes that hosts see.
///
/// The engine measures rotations the other way round; everything here is as BulletJoint tells it.
class JointCore {
public:
    /// One side of a joint.
    struct Side {
        /// Null for the world.
        BulletBody* body = nullptr;

        /// Rigid, in the frame of the body's node or of the world.
        Affine frame;
    };

    JointCore(std::shared_ptr<WorldCore> core, const collada::ConstraintInstance& description, const Side& first,
              const Side& second);
    ~JointCore();

    JointCore(const JointCore&) = delete;
    JointCore& operator=(const JointCore&) = delete;

    /// Takes the joint out of the engine for good. Called by the first of its bodies that goes.
    void disconnect();
    bool isConnected() const { return constraint != nullptr; }

    BulletBody* getFirst() const { return first; }
    BulletBody* getSecond() const { return second; }
    Affine getFirstFrame() const;
    Affine getSecondFrame() const;

    bool isEnabled() const { return enabled; }
    void setEnabled(bool shouldHold);

    const JointLimits& getLimits(std::size_t axis) const { return limits[axis]; }
    bool isLocked(std::size_t axis) const { return limits[axis].lower == limits[axis].upper; }
    double getPosition(std::size_t axis) const;

    void runMotor(std::size_t axis, double velocity, double maxForce);
    void holdMotor(std::size_t axis, double position, double maxVelocity, double maxForce);
    void stopMotor(std::size_t axis);

    /// To be called before each step of the engine.
    void pushSprings(double seconds);

    /// Belongs to the world's list of sprung joints.
    std::size_t sprungIndex = 0;

private:
    struct Motor {
        enum Kind { OFF, RUNS, HOLDS };

        Kind kind = OFF;
        double position = 0;
        double velocity = 0;
        double maxForce = 0;
    };

    struct AxisSpring {
        std::size_t axis = 0;
        collada::Spring spring;
    };

    /// Remembers what the motor of an axis is to do; false if that is what it does already.
    bool isNew(std::size_t axis, const Motor& motor);

    void setLimits(const collada::ConstraintInstance& description);
    void setSprings(const collada::ConstraintInstance& description);
    void applyLimit(std::size_t axis);
    void pushLinear(const AxisSpring& axisSpring, double seconds);
    void pushAngular(const AxisSpring& axisSpring, double seconds);
    void wake();

    const std::shared_ptr<WorldCore> core;
    BulletBody* first;
    BulletBody* second;
    std::unique_ptr<JointConstraint> constraint;
    std::array<JointLimits, 6> limits;
    std::array<Motor, 6> motors;
    std::vector<AxisSpring> springs;
    bool enabled;
    bool isInEngine = false;
};

} // namespace tessarin::dynamics::bullet
