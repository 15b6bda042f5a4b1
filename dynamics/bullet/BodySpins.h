#pragma once

#include <dynamics/bullet/FreeRotation.h>

#include <btBulletDynamicsCommon.h>

#include <vector>

namespace tessarin::dynamics::bullet {

/// What single precision rounds off a body that turns. Where that went again and again, a body that turns over would
/// do so at wrong times. It counts as long as nobody else has turned the body or changed its velocity.
struct ExactSpin {
    Quaternion axes;              // the principal ones in the world
    Vector3 velocity = {0, 0, 0}; // about them
    btMatrix3x3 roundedAxes = btMatrix3x3::getIdentity();
    btVector3 roundedVelocity = {0, 0, 0};

    /// The body's, read from the body where it was changed by somebody else.
    static ExactSpin of(const btRigidBody& body);
};

/// Turns bodies in a step of the engine as Euler's equations say, which it does itself only roughly: its own gyroscopic
/// terms, which bodies must have switched off, take energy from whatever tumbles.
///
/// While the engine solves, a body has the steady angular velocity that would turn it in one step as it turns when
/// nothing acts on it. What contacts and joints change about that is a blow at the beginning of the step. So a body
/// that is free turns exactly, one that is held keeps its place, and the angular momentum is what was there and what
/// was added.
class BodySpins {
public:
    /// To be called before the engine solves.
    void prepare(const btAlignedObjectArray<btRigidBody*>& bodies, double seconds);

    /// To be called when it has solved, before it moves the bodies.
    void noteStarts();

    /// To be called when it has moved them.
    void finish(double seconds);

private:
    struct Spin {
        btRigidBody* body = nullptr;

        // About the principal axes as they were before solving. When nothing acts on the body, it turns by the twist
        // and then by the swing.
        Vector3 moments = {0, 0, 0};
        Vector3 momentum = {0, 0, 0};
        Quaternion twist;
        Vector3 swing = {0, 0, 0};

        /// Before solving.
        ExactSpin before;

        /// The principal axes after solving, since the engine turns bodies out of others.
        Quaternion start;

        /// The steady velocity in the world, as the engine has it.
        btVector3 given = {0, 0, 0};
    };

    static bool turnsAsTheEngineDoes(const btRigidBody& body, double seconds);
    static void finish(const Spin& spin, double seconds);

    std::vector<Spin> spins;
};

} // namespace tessarin::dynamics::bullet
