#pragma once

#include <dynamics/bullet/BodySpins.h>
#include <dynamics/bullet/Bounces.h>
#include <dynamics/bullet/ContactLoads.h>
#include <dynamics/bullet/RollingResistance.h>

#include <btBulletDynamicsCommon.h>

namespace tessarin::dynamics::bullet {

/// The engine's world with what it lacks: a friction that differs between sliding and sticking, bounces as high as
/// they should be, bodies that roll freely and tumble without losing energy, and constraints that are taken out in no
/// time.
class EngineWorld : public btDiscreteDynamicsWorld {
public:
    using btDiscreteDynamicsWorld::btDiscreteDynamicsWorld;

    void addConstraint(btTypedConstraint* constraint, bool disableCollisions) override;
    void removeConstraint(btTypedConstraint* constraint) override;
    void performDiscreteCollisionDetection() override;

protected:
    void solveConstraints(btContactSolverInfo& info) override;
    void integrateTransforms(btScalar seconds) override;

private:
    void prepareContacts(const btContactSolverInfo& info);

    ContactLoads loads;
    BodySpins spins;
    Bounces bounces;
    RollingResistance rollingResistance;
};

} // namespace tessarin::dynamics::bullet
