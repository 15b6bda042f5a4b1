#include <dynamics/bullet/BodySpins.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/BulletConversions.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// Radians in one step. Below the first the velocity hardly changes. By much more than the second the engine doesn't
/// turn a body, however fast it is. Above the third one can't tell the way round by where a body has come to. Beyond
/// the last one the equations are not worth their cost.
constexpr double slowestTurn = 1e-5;
constexpr double longestOfEngine = 0.7;
constexpr double longestSteady = 2.5;
constexpr double longestTurn = 100;

/// Moments that differ by less, against the largest, are those of a ball.
constexpr double differingPart = 1e-6;

Quaternion quaternionOf(const btQuaternion& a) {
    return normalized(Quaternion{{a.x(), a.y(), a.z()}, a.w()});
}

btQuaternion bulletQuaternion(const Quaternion& a) {
    const btVector3 vector = toBullet(a.vector);
    return {vector.x(), vector.y(), vector.z(), static_cast<btScalar>(a.scalar)};
}

Vector3 momentsOf(const btRigidBody& body) {
    const btVector3& inverse = body.getInvInertiaDiagLocal();
    return {1.0 / inverse.x(), 1.0 / inverse.y(), 1.0 / inverse.z()};
}

bool isRound(const btRigidBody& body) {
    const btVector3& inverse = body.getInvInertiaDiagLocal();
    const double most = inverse[inverse.maxAxis()];
    return most - inverse[inverse.minAxis()] <= differingPart * most;
}

/// A joint can't hold a body that turns by more than half a turn in one step.
void slowDownOnJoints(btRigidBody& body, double seconds) {
    const btVector3& velocity = body.getAngularVelocity();
    const double angle = static_cast<double>(velocity.length()) * seconds;
    if (angle > longestSteady && static_cast<BulletBody*>(body.getUserPointer())->hasJoints()) {
        body.setAngularVelocity(velocity * static_cast<btScalar>(longestSteady / angle));
    }
}

/// The principal axis that a body turns about, more or less; a round one has them all.
Vector3 spinAxis(const Vector3& velocity, bool isRound) {
    if (isRound) {
        return normalized(velocity);
    }
    const auto larger = [](double a, double b) { return std::abs(a) < std::abs(b); };
    const auto index = std::max_element(velocity.begin(), velocity.end(), larger) - velocity.begin();
    return identityMatrix3[static_cast<std::size_t>(index)];
}

/// The part of a turn that is about an axis.
Quaternion twistOf(const Quaternion& turn, const Vector3& axis) {
    const double sine = dot(turn.vector, axis);
    // Half a turn about an axis at right angles has none that can be told.
    return std::hypot(sine, turn.scalar) > 1e-9 ? normalized(Quaternion{axis * sine, turn.scalar}) : Quaternion();
}

} // namespace

ExactSpin ExactSpin::of(const btRigidBody& body) {
    const ExactSpin& known = static_cast<BulletBody*>(body.getUserPointer())->exactSpin;
    const btMatrix3x3& axes = body.getWorldTransform().getBasis();
    if (axes == known.roundedAxes && body.getAngularVelocity() == known.roundedVelocity) {
        return known;
    }
    const Quaternion exact = quaternionOf(body.getOrientation());
    return {exact, rotated(conjugate(exact), fromBullet(body.getAngularVelocity())), axes, body.getAngularVelocity()};
}

bool BodySpins::turnsAsTheEngineDoes(const btRigidBody& body, double seconds) {
    const double angle = static_cast<double>(body.getAngularVelocity().length()) * seconds;
    return angle < (isRound(body) ? longestOfEngine : slowestTurn);
}

void BodySpins::prepare(const btAlignedObjectArray<btRigidBody*>& bodies, double seconds) {
    spins.clear();
    for (int i = 0; i < bodies.size(); ++i) {
        btRigidBody& body = *bodies[i];
        if (!body.isActive() || body.isStaticOrKinematicObject() || turnsAsTheEngineDoes(body, seconds)) {
            continue;
        }
        slowDownOnJoints(body, seconds);
        const ExactSpin before = ExactSpin::of(body);
        const Vector3& velocity = before.velocity;
        const Vector3 moments = momentsOf(body);
        if (!(rotationRate(velocity, moments) * seconds < longestTurn)) {
            continue;
        }
        const Vector3 momentum = diagonal(moments) * velocity;
        const Quaternion turn = freeRotation(momentum, moments, seconds);
        Quaternion twist;
        Vector3 twistVelocity = {0, 0, 0};
        if (length(velocity) * seconds > longestSteady) {
            // The main part of it is told apart, about the axis that it is nearest to.
            const Vector3 axis = spinAxis(velocity, isRound(body));
            twist = twistOf(turn, axis);
            twistVelocity = axis * dot(velocity, axis);
        }
        const Vector3 swing = toVector(turn * conjugate(twist));
        const btVector3 given = toBullet(rotated(before.axes, twistVelocity + swing * (1 / seconds)));
        spins.push_back({&body, moments, momentum, twist, swing, before, before.axes, given});
        body.setAngularVelocity(given);
    }
}

void BodySpins::noteStarts() {
    for (Spin& spin : spins) {
        if (!(spin.body->getWorldTransform().getBasis() == spin.before.roundedAxes)) {
            spin.start = quaternionOf(spin.body->getOrientation());
        }
    }
}

void BodySpins::finish(double seconds) {
    for (const Spin& spin : spins) {
        finish(spin, seconds);
    }
}

void BodySpins::finish(const Spin& spin, double seconds) {
    btRigidBody& body = *spin.body;
    const btVector3 added = body.getAngularVelocity() - spin.given;
    const Vector3 change = rotated(conjugate(spin.before.axes), fromBullet(added));
    const Vector3 momentum = spin.momentum + diagonal(spin.moments) * change;
    Quaternion turn = fromVector(spin.swing + change * seconds) * spin.twist;
    // One that was stopped on its way, at a surface, is where the engine has put it.
    const bool isStopped = body.getHitFraction() < 1;
    if (isStopped) {
        turn = conjugate(spin.start) * quaternionOf(body.getOrientation());
    }
    const Quaternion end = normalized(spin.start * turn);
    const Vector3 velocity = turningVelocity(rotated(conjugate(turn), momentum), spin.moments);
    body.setAngularVelocity(toBullet(rotated(end, velocity)));
    btTransform place = body.getWorldTransform();
    if (!isStopped) {
        place.setRotation(bulletQuaternion(end));
    }
    body.setCenterOfMassTransform(place);
    static_cast<BulletBody*>(body.getUserPointer())->exactSpin = {end, velocity, place.getBasis(),
                                                                  body.getAngularVelocity()};
}

} // namespace tessarin::dynamics::bullet
