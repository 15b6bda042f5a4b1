#include <dynamics/bullet/RollingResistance.h>

#include <dynamics/bullet/BulletBody.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// As part of the weight, the resistance of a body that has rolled long enough, and when that is, in seconds. Till then
/// it grows with the square of the time: in three seconds a body loses a hundredth of a metre per second, in
/// fifteen 1.4.
constexpr btScalar fullResistance = 0.04F;
constexpr btScalar fullTime = 15;

/// On what is steeper than half a degree a body rolls freely. A short bump doesn't count.
constexpr btScalar levelSine = 0.0087F;
constexpr btScalar forgetting = 10;

/// A body that gains more than this part of its energy is driven.
constexpr btScalar gain = 0.02F;

/// As part of what gravity adds to a velocity in one step: a body that is as slow lies.
constexpr btScalar lyingPart = 0.1F;

/// Spinning on a spot is held back with less leverage than rolling.
constexpr btScalar spinLever = 0.3F;

const BulletBody& ownerOf(const btCollisionObject& body) {
    return *static_cast<const BulletBody*>(body.getUserPointer());
}

bool rolls(const btCollisionObject& body) {
    return !body.isStaticObject() && ownerOf(body).isRound();
}

btScalar energyOf(const btRigidBody& body) {
    const btVector3 spin = body.getAngularVelocity() * body.getWorldTransform().getBasis();
    const btVector3& inertia = body.getLocalInertia();
    return (body.getLinearVelocity().length2() + (spin * inertia).dot(spin) * body.getInvMass()) / 2;
}

/// A body that spins about an upright axis, or that moves as its rolling does; no top that leans.
bool isRolling(const btRigidBody& body, const Rolling& rolling) {
    const btVector3 up = rolling.push / rolling.push.length();
    const btVector3& spin = body.getAngularVelocity();
    const btScalar lying = (spin - up * up.dot(spin)).length();
    return lying < btScalar(0.1) * spin.length() ||
           body.getLinearVelocity().length() > btScalar(0.3) * lying * rolling.height;
}

bool isOfRound(const btPersistentManifold& manifold) {
    const btCollisionObject& a = *manifold.getBody0();
    const btCollisionObject& b = *manifold.getBody1();
    return (a.isActive() || b.isActive()) && (rolls(a) || rolls(b));
}

/// What the engine has to take for friction at a contact of a body. It multiplies that by the impulse there, but takes
/// none above 1 for more than 1.
btScalar frictionOf(const btCollisionObject& body, const btVector3& point, const btVector3& normal, int pointCount) {
    if (!rolls(body)) {
        return 0;
    }
    const Rolling& rolling = ownerOf(body).rolling;
    const btScalar lever = std::abs(normal.dot(point - body.getWorldTransform().getOrigin()));
    const btScalar impulse = rolling.push.length() / static_cast<btScalar>(pointCount);
    return rolling.resistance * lever * std::max(impulse, btScalar(1));
}

} // namespace

void RollingResistance::prepare(btDispatcher& dispatcher) {
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        btPersistentManifold& manifold = *dispatcher.getManifoldByIndexInternal(i);
        if (!isOfRound(manifold)) {
            continue;
        }
        const int count = manifold.getNumContacts();
        for (int j = 0; j < count; ++j) {
            btManifoldPoint& point = manifold.getContactPoint(j);
            const btVector3& normal = point.m_normalWorldOnB;
            point.m_combinedRollingFriction =
                std::max(frictionOf(*manifold.getBody0(), point.m_positionWorldOnA, normal, count),
                         frictionOf(*manifold.getBody1(), point.m_positionWorldOnB, normal, count));
            point.m_combinedSpinningFriction = point.m_combinedRollingFriction * spinLever;
        }
    }
}

void RollingResistance::finish(btDispatcher& dispatcher, const btVector3& gravityOfWorld, btScalar seconds) {
    gravity = gravityOfWorld;
    timeStep = seconds;
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        const btPersistentManifold& manifold = *dispatcher.getManifoldByIndexInternal(i);
        if (!isOfRound(manifold)) {
            continue;
        }
        for (int j = 0; j < manifold.getNumContacts(); ++j) {
            const btManifoldPoint& point = manifold.getContactPoint(j);
            const btVector3& normal = point.m_normalWorldOnB;
            const btScalar impulse = point.m_appliedImpulse;
            addPush(*static_cast<const btRigidBody*>(manifold.getBody0()), normal, impulse, point.m_positionWorldOnA);
            addPush(*static_cast<const btRigidBody*>(manifold.getBody1()), -normal, impulse, point.m_positionWorldOnB);
        }
    }
    for (BulletBody* owner : touched) {
        update(*owner);
        owner->rolling.isGathered = false;
    }
    touched.clear();
}

void RollingResistance::addPush(const btRigidBody& body, const btVector3& normal, btScalar impulse,
                                const btVector3& point) {
    if (!(impulse > 0) || !rolls(body)) {
        return;
    }
    auto& owner = *static_cast<BulletBody*>(body.getUserPointer());
    if (!owner.rolling.isGathered) {
        owner.rolling.isGathered = true;
        owner.rolling.push.setZero();
        owner.rolling.height = 0;
        touched.push_back(&owner);
    }
    owner.rolling.push += normal * impulse;
    const btScalar height = normal.dot(body.getCenterOfMassPosition() - point);
    owner.rolling.height = std::max(owner.rolling.height, height);
}

void RollingResistance::update(BulletBody& owner) const {
    const btRigidBody& body = owner.getRigidBody();
    Rolling& rolling = owner.rolling;
    const btScalar energy = energyOf(body);
    const btScalar lyingSpeed = lyingPart * gravity.length() * timeStep;
    if (energy > rolling.leastEnergy * (1 + gain) + lyingSpeed * lyingSpeed / 2) {
        rolling.calmTime = 0;
        rolling.leastEnergy = energy;
    }
    rolling.leastEnergy = std::min(rolling.leastEnergy, energy);
    const btScalar down = rolling.push.dot(gravity);
    const btScalar aside = rolling.push.cross(gravity).length();
    const bool isLevel = aside < -down * levelSine;
    if (isLevel && isRolling(body, rolling)) {
        rolling.calmTime = std::min(rolling.calmTime + timeStep, fullTime);
    } else {
        rolling.calmTime = std::max(rolling.calmTime - forgetting * timeStep, btScalar(0));
    }
    const btScalar part = rolling.calmTime / fullTime;
    rolling.resistance = fullResistance * part * part;
}

} // namespace tessarin::dynamics::bullet
