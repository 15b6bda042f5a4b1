#pragma once

#include <dynamics/bullet/Affine.h>

#include <btBulletDynamicsCommon.h>

namespace tessarin::dynamics::bullet {

/// What the engine counts masses in.
///
/// What has more than some millions of mass or of inertia the engine takes for something that can't move: contacts and
/// joints no longer hold it. In a file that counts in millimetres that is everything that weighs a hundred kilogrammes.
/// So a world that holds such a body counts all masses, forces and impulses in a larger unit: a power of two, which
/// costs no digits, and 1 as long as that will do.
class MassUnit {
public:
    explicit MassUnit(btDiscreteDynamicsWorld& engineWorld) : world(engineWorld) {}

    /// How much a unit of the engine's is.
    double get() const { return unit; }

    /// Makes the unit large enough for a body, and lets all that is in the world have its masses and forces in it.
    void makeRoomFor(double mass, const Vector3& inertia);

    /// To be called when nothing is in the world.
    void reset() { unit = 1; }

private:
    btDiscreteDynamicsWorld& world;
    double unit = 1;
};

} // namespace tessarin::dynamics::bullet
