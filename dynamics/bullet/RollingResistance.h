#pragma once

#include <btBulletDynamicsCommon.h>

#include <vector>

namespace tessarin::dynamics::bullet {

class BulletBody;

/// What a round body remembers of its way.
struct Rolling {
    /// The sum of the impulses at its contacts in the last step that had any, and what that is over a fifth of a
    /// second.
    btVector3 push = btVector3(0, 0, 0);
    btVector3 meanPush = btVector3(0, 0, 0);
    bool isGathered = false;

    /// How high its centre of mass was above these.
    btScalar height = 0;

    /// Per unit of mass, the least energy since it gained some, and how low it has been since.
    btScalar leastEnergy = 0;
    btScalar leastHeight = 0;

    /// For how long it has been left to itself, in seconds.
    btScalar calmTime = 0;

    /// Of its weight, what holds it back.
    btScalar resistance = 0;
};

/// Brings round bodies to rest that roll or spin on level ground and that nothing drives.
///
/// Nothing would, else: no file says how much a surface resists. A body that has been left to itself for some seconds
/// is held back, by and by, as if it rolled on a carpet. On a slope, and wherever it gains speed, it rolls freely.
class RollingResistance {
public:
    /// To be called before the engine solves its contacts.
    static void prepare(btDispatcher& dispatcher);

    /// To be called after it has: learns how bodies roll.
    void finish(btDispatcher& dispatcher, const btVector3& gravity, btScalar timeStep);

private:
    void addPush(const btRigidBody& body, const btVector3& normal, btScalar impulse, const btVector3& point);
    void update(BulletBody& owner) const;
    bool isDriven(const btRigidBody& body, Rolling& rolling) const;

    std::vector<BulletBody*> touched;
    btVector3 gravity = btVector3(0, 0, 0);
    btScalar timeStep = 0;
};

} // namespace tessarin::dynamics::bullet
