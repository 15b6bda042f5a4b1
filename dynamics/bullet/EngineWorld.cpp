#include <dynamics/bullet/EngineWorld.h>

#include <dynamics/bullet/BulletBody.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// As part of what gravity adds to a velocity in one step: a body that sticks has hardly any of it left.
constexpr btScalar stickingPart = 0.1F;

const collada::Material& materialOf(const btRigidBody& body) {
    return static_cast<const BulletBody*>(body.getUserPointer())->getMaterial();
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
        const btVector3 speed = a.getVelocityInLocalPoint(point.m_positionWorldOnA - a.getCenterOfMassPosition()) -
                                b.getVelocityInLocalPoint(point.m_positionWorldOnB - b.getCenterOfMassPosition());
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

void EngineWorld::solveConstraints(btContactSolverInfo& info) {
    setFrictions(info);
    spins.prepare(m_nonStaticRigidBodies, static_cast<double>(info.m_timeStep));
    btDiscreteDynamicsWorld::solveConstraints(info);
}

void EngineWorld::integrateTransforms(btScalar seconds) {
    spins.noteStarts();
    btDiscreteDynamicsWorld::integrateTransforms(seconds);
    spins.finish(static_cast<double>(seconds));
}

void EngineWorld::setFrictions(const btContactSolverInfo& info) {
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
        if ((a.isActive() || b.isActive()) && (slips(a) || slips(b))) {
            setFriction(manifold, a, b, sticking);
        }
    }
}

} // namespace tessarin::dynamics::bullet
