#pragma once

#include <gmtl/Vec.h>

namespace tessarin::dynamics {
class DynamicsBody;
class DynamicsUserData;
} // namespace tessarin::dynamics

namespace tessarin::dynamics::bullet {

/// Two bodies that touched during the last BulletDynamicsWorld::step, one entry for each pair.
struct BulletContact {
    /// Both null if one of the two has been deleted since.
    DynamicsBody* first = nullptr;
    DynamicsBody* second = nullptr;

    /// What the bodies hold by DynamicsBody::setUserData at present; null where they hold nothing.
    DynamicsUserData* firstUserData = nullptr;
    DynamicsUserData* secondUserData = nullptr;

    /// Where they pushed each other hardest, in the world.
    gmtl::Vec<double, 3> point;

    /// Of unit length, there, from the second body towards the first.
    gmtl::Vec<double, 3> normal;

    /// How much they pushed each other apart over the whole step: mass times velocity.
    double impulse = 0;

    /// They did not touch in the step before.
    bool began = false;
};

} // namespace tessarin::dynamics::bullet
