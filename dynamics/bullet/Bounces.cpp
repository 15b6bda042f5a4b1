#include <dynamics/bullet/Bounces.h>

#include <dynamics/bullet/BulletBody.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// A rebound that gravity ends within so many steps is none.
constexpr btScalar shortestFlight = 2;

/// Bodies that are in each other may have met so many steps ago; what is deeper has another cause.
constexpr btScalar longestPast = 2;

btRigidBody& bodyOf(const btCollisionObject* object) {
    return *static_cast<btRigidBody*>(const_cast<btCollisionObject*>(object));
}

BulletBody& ownerOf(const btRigidBody& body) {
    return *static_cast<BulletBody*>(body.getUserPointer());
}

btVector3 accelerationOf(const btRigidBody& body) {
    return body.getTotalForce() * body.getInvMass();
}

btVector3 velocityAt(const btRigidBody& body, const btVector3& point) {
    return body.getVelocityInLocalPoint(point - body.getCenterOfMassPosition());
}

btScalar restitutionOf(const btPersistentManifold& manifold) {
    const btCollisionObject& a = *manifold.getBody0();
    const btCollisionObject& b = *manifold.getBody1();
    return a.isActive() || b.isActive() ? a.getRestitution() * b.getRestitution() : 0;
}

/// The engine sweeps a ball that lies within the body: makes what it has found a contact of the body itself.
void completePredicted(btPersistentManifold& manifold) {
    const btRigidBody& swept = bodyOf(manifold.getBody0());
    const auto& shape = *static_cast<const btConvexShape*>(swept.getCollisionShape()); // it sweeps no others
    const bool isBall = shape.getShapeType() == SPHERE_SHAPE_PROXYTYPE;
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        btManifoldPoint& point = manifold.getContactPoint(i);
        const btVector3 inward = -point.m_normalWorldOnB;
        const btVector3 local = inward * swept.getWorldTransform().getBasis();
        const btScalar reach = shape.localGetSupportingVertex(local).dot(local);
        const btScalar gap = point.getDistance() + swept.getCcdSweptSphereRadius() - reach;
        if (isBall) {
            point.m_positionWorldOnA = swept.getCenterOfMassPosition() + inward * reach;
            point.m_positionWorldOnB = point.m_positionWorldOnA + inward * gap;
        }
        // A ball that touches already has a contact of its own.
        point.setDistance(isBall && gap < 0 ? BT_LARGE_FLOAT : std::max(gap, btScalar(0)));
    }
}

} // namespace

void Bounces::prepare(btDispatcher& dispatcher, const btAlignedObjectArray<btPersistentManifold*>& predictive,
                      const btVector3& gravity, btScalar seconds) {
    timeStep = seconds;
    slowestRebound = std::max(gravity.length() * seconds * shortestFlight / 2, btScalar(1e-6));
    for (int i = 0; i < predictive.size(); ++i) {
        if (restitutionOf(*predictive[i]) > 0) {
            completePredicted(*predictive[i]);
        }
    }
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        btPersistentManifold& manifold = *dispatcher.getManifoldByIndexInternal(i);
        const btScalar restitution = restitutionOf(manifold);
        for (int j = 0; restitution > 0 && j < manifold.getNumContacts(); ++j) {
            preparePoint(manifold.getContactPoint(j), bodyOf(manifold.getBody0()), bodyOf(manifold.getBody1()),
                         restitution);
        }
    }
}

void Bounces::preparePoint(btManifoldPoint& point, btRigidBody& a, btRigidBody& b, btScalar restitution) {
    point.m_combinedRestitution = 0;
    const btVector3& normal = point.m_normalWorldOnB;
    const btScalar before =
        -normal.dot(velocityAt(a, point.m_positionWorldOnA) - velocityAt(b, point.m_positionWorldOnB));
    const btScalar pull = -normal.dot(accelerationOf(a) - accelerationOf(b));
    if (-before > slowestRebound) {
        point.m_appliedImpulse = 0; // the engine would begin with what held them in the last step
    }
    // The engine's velocities are those of half a step earlier.
    const btScalar start = before + pull * timeStep / 2;
    const btScalar way = start * timeStep + pull * timeStep * timeStep / 2;
    const btScalar gap = std::max(point.getDistance(), -longestPast * start * timeStep);
    const btScalar square = start * start + 2 * pull * gap;
    if (!(before > 0) || gap > way || !(square > 0)) {
        return;
    }
    const btScalar impact = std::sqrt(square);
    const btScalar rebound = restitution * impact;
    if (rebound < slowestRebound) {
        return;
    }
    const btScalar time = 2 * gap / (start + impact);
    const bool isNoted = note(point, a, time);
    if (note(point, b, time) || isNoted || gap > 0) {
        point.setDistance(point.getDistance() - gap);
    }
    const btScalar after = rebound - pull * (timeStep - time) + pull * timeStep / 2;
    point.m_combinedRestitution = std::max(after, btScalar(0)) / before;
}

bool Bounces::note(const btManifoldPoint& point, btRigidBody& body, btScalar time) {
    BulletBody& owner = ownerOf(body);
    // What a joint holds has to stay beside the body at its other end.
    if (body.isStaticObject() || owner.hasJoints()) {
        return false;
    }
    const std::size_t known = owner.flight;
    if (known >= flights.size() || flights[known].body != &body) {
        owner.flight = flights.size();
        flights.push_back(
            {&body, body.getLinearVelocity() + accelerationOf(body) * timeStep, body.getAngularVelocity(), 0, 0});
    }
    meetings.push_back({&point, owner.flight, time});
    return true;
}

void Bounces::noteChanges() {
    for (Flight& flight : flights) {
        flight.linearVelocity -= flight.body->getLinearVelocity();
        flight.angularVelocity -= flight.body->getAngularVelocity();
    }
    for (const Meeting& meeting : meetings) {
        Flight& flight = flights[meeting.flight];
        flight.impulse += meeting.point->m_appliedImpulse;
        flight.impulseTimesTime += meeting.point->m_appliedImpulse * meeting.time;
    }
}

void Bounces::finish() {
    for (const Flight& flight : flights) {
        if (flight.impulse > 0) {
            btTransform place;
            btTransformUtil::integrateTransform(flight.body->getWorldTransform(), flight.linearVelocity,
                                                flight.angularVelocity, flight.impulseTimesTime / flight.impulse,
                                                place);
            flight.body->proceedToTransform(place);
        }
    }
    meetings.clear();
    flights.clear();
}

} // namespace tessarin::dynamics::bullet
