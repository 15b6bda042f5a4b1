#include <dynamics/bullet/EngineWorld.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/RoundContacts.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// As part of what gravity adds to a velocity in one step: a body that sticks has hardly any of it left.
constexpr btScalar stickingPart = 0.1F;

const collada::Material& materialOf(const btRigidBody& body) {
    return static_cast<const BulletBody*>(body.getUserPointer())->getMaterial();
}

/// The engine lets friction act along what is left of a velocity without its part along the normal. With less than this
/// part of it that is rounding, which may well be along the normal itself; slow bodies leave nothing.
constexpr btScalar roundingPart = 1e-5F;
constexpr btScalar slowSpeed = 100;
constexpr btScalar slowTurn = 0.25F;

btVector3 velocityBetween(const btManifoldPoint& point, const btRigidBody& a, const btRigidBody& b) {
    return a.getVelocityInLocalPoint(point.m_positionWorldOnA - a.getCenterOfMassPosition()) -
           b.getVelocityInLocalPoint(point.m_positionWorldOnB - b.getCenterOfMassPosition());
}

bool isSlow(const btRigidBody& body) {
    return body.getLinearVelocity().length2() < slowSpeed * slowSpeed &&
           body.getAngularVelocity().length2() < slowTurn * slowTurn;
}

/// Gives friction directions of its own where bodies meet head-on at hundreds of units a second.
void chooseFrictionDirections(btPersistentManifold& manifold, const btRigidBody& a, const btRigidBody& b) {
    const bool areSlow = isSlow(a) && isSlow(b);
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        btManifoldPoint& point = manifold.getContactPoint(i);
        point.m_contactPointFlags &= ~BT_CONTACT_FLAG_LATERAL_FRICTION_INITIALIZED;
        if (areSlow) {
            continue;
        }
        const btVector3 speed = velocityBetween(point, a, b);
        const btVector3 along = speed - point.m_normalWorldOnB * speed.dot(point.m_normalWorldOnB);
        if (along.length2() < roundingPart * roundingPart * speed.length2()) {
            btPlaneSpace1(point.m_normalWorldOnB, point.m_lateralFrictionDir1, point.m_lateralFrictionDir2);
            point.m_contactPointFlags |= BT_CONTACT_FLAG_LATERAL_FRICTION_INITIALIZED;
        }
    }
}

/// Of two materials the geometric mean counts, so that two equal ones rub as each of them says.
double mean(double a, double b) {
    return std::sqrt(a * b);
}

void setFriction(btPersistentManifold& manifold, const btRigidBody& a, const btRigidBody& b, btScalar sticking) {
    const collada::Material& first = materialOf(a);
    const collada::Material& second = materialOf(b);
    const auto atRest = static_cast<btScalar>(mean(first.staticFriction, second.staticFriction));
    const auto sliding = static_cast<btScalar>(mean(first.dynamicFriction, second.dynamicFriction));
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        btManifoldPoint& point = manifold.getContactPoint(i);
        const btVector3 speed = velocityBetween(point, a, b);
        const btVector3 along = speed - point.m_normalWorldOnB * speed.dot(point.m_normalWorldOnB);
        point.m_combinedFriction = along.length2() > sticking * sticking ? sliding : atRest;
    }
}

} // namespace

void EngineWorld::addConstraint(btTypedConstraint* constraint, bool disableCollisions) {
    constraint->setUserConstraintId(m_constraints.size());
    btDiscreteDynamicsWorld::addConstraint(constraint, disableCollisions);
}

void EngineWorld::removeConstraint(btTypedConstraint* constraint) {
    const int index = constraint->getUserConstraintId();
    m_constraints.swap(index, m_constraints.size() - 1);
    m_constraints[index]->setUserConstraintId(index);
    m_constraints.pop_back();
    constraint->getRigidBodyA().removeConstraintRef(constraint);
    constraint->getRigidBodyB().removeConstraintRef(constraint);
}

void EngineWorld::performDiscreteCollisionDetection() {
    loads.note(*getDispatcher());
    btDiscreteDynamicsWorld::performDiscreteCollisionDetection();
    loads.passOn(*getDispatcher());
}

void EngineWorld::solveConstraints(btContactSolverInfo& info) {
    prepareContacts(info);
    RollingResistance::prepare(*getDispatcher());
    spins.prepare(m_nonStaticRigidBodies, static_cast<double>(info.m_timeStep));
    bounces.prepare(*getDispatcher(), m_predictiveManifolds, getGravity(), info.m_timeStep);
    btDiscreteDynamicsWorld::solveConstraints(info);
}

void EngineWorld::integrateTransforms(btScalar seconds) {
    bounces.noteChanges();
    spins.noteStarts();
    btDiscreteDynamicsWorld::integrateTransforms(seconds);
    spins.finish(static_cast<double>(seconds));
    bounces.finish();
    rollingResistance.finish(*getDispatcher(), getGravity(), seconds);
}

void EngineWorld::prepareContacts(const btContactSolverInfo& info) {
    const btScalar sticking = std::max(getGravity().length() * info.m_timeStep * stickingPart, btScalar(1e-6));
    btDispatcher& dispatcher = *getDispatcher();
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        btPersistentManifold& manifold = *dispatcher.getManifoldByIndexInternal(i);
        const auto& a = *static_cast<const btRigidBody*>(manifold.getBody0());
        const auto& b = *static_cast<const btRigidBody*>(manifold.getBody1());
        const auto slips = [](const btRigidBody& body) {
            const collada::Material& material = materialOf(body);
            return material.staticFriction != material.dynamicFriction;
        };
        if (!a.isActive() && !b.isActive()) {
            continue;
        }
        mendRoundContacts(manifold);
        chooseFrictionDirections(manifold, a, b);
        if (slips(a) || slips(b)) {
            setFriction(manifold, a, b, sticking);
        }
    }
}

} // namespace tessarin::dynamics::bullet
