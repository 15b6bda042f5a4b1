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

/// For so many seconds contacts are looked at together: at the edges in a mesh they point anywhere.
constexpr btScalar meanTime = 0.2F;

/// What is less steep than half a degree is level. On a slope time counts for less, and a body that gets lower there,
/// by more than a part of its size, begins anew.
constexpr btScalar levelSine = 0.0087F;
constexpr btScalar slopePart = 0.25F;
constexpr btScalar lowerPart = 0.005F;

/// How much faster than it comes the time of a body goes that neither rolls nor spins upright.
constexpr btScalar forgetting = 10;

/// A body that gains more than this part of its energy is driven, unless that comes as slowly as with this part of
/// gravity: contacts at many edges do so.
constexpr btScalar gain = 0.02F;
constexpr btScalar slowGain = 0.01F;

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
    const btVector3 up = rolling.meanPush / rolling.meanPush.length();
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
    const btScalar impulse = rolling.meanPush.length() / static_cast<btScalar>(pointCount);
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

bool RollingResistance::isDriven(const btRigidBody& body, Rolling& rolling) const {
    const btScalar fall = gravity.length() * timeStep;
    const btScalar moving = energyOf(body);
    const btScalar energy = moving - gravity.dot(body.getCenterOfMassPosition());
    const btScalar lying = lyingPart * fall * lyingPart * fall / 2;
    const bool gains = energy > rolling.leastEnergy + gain * moving + lying;
    rolling.leastEnergy =
        gains ? energy : std::min(rolling.leastEnergy + slowGain * fall * std::sqrt(2 * moving), energy);
    return gains;
}

void RollingResistance::update(BulletBody& owner) const {
    Rolling& rolling = owner.rolling;
    const btRigidBody& body = owner.getRigidBody();
    rolling.meanPush += (rolling.push - rolling.meanPush) * std::min(timeStep / meanTime, btScalar(1));
    const btScalar down = rolling.meanPush.dot(gravity);
    const btScalar aside = rolling.meanPush.cross(gravity).length();
    const bool isLevel = aside < -down * levelSine;
    const btScalar height = -gravity.dot(body.getCenterOfMassPosition()) / std::max(gravity.length(), SIMD_EPSILON);
    const bool isDriving = isDriven(body, rolling);
    const bool isLower = height < rolling.leastHeight - lowerPart * static_cast<btScalar>(owner.getSize());
    if (isDriving || isLower) {
        rolling.leastHeight = height;
    }
    if (isDriving || (isLower && !isLevel)) {
        rolling.calmTime = 0;
    } else if (isRolling(body, rolling)) {
        rolling.calmTime = std::min(rolling.calmTime + timeStep * (isLevel ? btScalar(1) : slopePart), fullTime);
    } else {
        rolling.calmTime = std::max(rolling.calmTime - forgetting * timeStep, btScalar(0));
    }
    const btScalar part = rolling.calmTime / fullTime;
    rolling.resistance = fullResistance * part * part;
}

} // namespace tessarin::dynamics::bullet
