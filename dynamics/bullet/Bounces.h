#pragma once

#include <btBulletDynamicsCommon.h>

#include <cstddef>
#include <vector>

namespace tessarin::dynamics::bullet {

/// Lets bodies bounce at the moment at which their surfaces meet.
///
/// That moment lies somewhere within a step of the engine. By itself the engine lets a body bounce where the step
/// begins, takes what remains of a gap off its speed and adds what is to take it out of the other body, so that the
/// height of a bounce is a matter of chance. Here a point of contact gets the speed that bodies which meet like these
/// have at the end of the step; and when the engine has moved the bodies, each is put where its old speed up to that
/// moment and its new speed from then on take it.
class Bounces {
public:
    /// To be called before the engine solves its contacts: finds where bodies meet in this step and tells the engine
    /// how fast they part. Where a rebound would be over at once, they don't bounce.
    /// @param predictive the contacts that the engine has foreseen for bodies that are swept.
    void prepare(btDispatcher& dispatcher, const btAlignedObjectArray<btPersistentManifold*>& predictive,
                 const btVector3& gravity, btScalar timeStep);

    /// To be called when the engine has solved them.
    void noteChanges();

    /// To be called after the engine has moved the bodies.
    void finish();

private:
    /// A point at which a body bounces, and when, counted from the beginning of the step.
    struct Meeting {
        const btManifoldPoint* point = nullptr;
        std::size_t flight = 0;
        btScalar time = 0;
    };

    /// A body that bounces, with the velocities that it would have had, and then with what they have lost.
    struct Flight {
        btRigidBody* body = nullptr;
        btVector3 linearVelocity;
        btVector3 angularVelocity;
        btScalar impulse = 0;
        btScalar impulseTimesTime = 0;
    };

    void preparePoint(btManifoldPoint& point, btRigidBody& a, btRigidBody& b, btScalar restitution);
    bool note(const btManifoldPoint& point, btRigidBody& body, btScalar time);

    std::vector<Meeting> meetings;
    std::vector<Flight> flights;
    btScalar timeStep = 0;
    btScalar slowestRebound = 0;
};

} // namespace tessarin::dynamics::bullet
