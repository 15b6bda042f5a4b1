#include <dynamics/bullet/WorldCore.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/BulletConversions.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessarin::dynamics::bullet {

namespace {

constexpr int solverIterations = 20;

/// Parts of a fixed step that are lost to rounding when times are added up.
constexpr double timeRounding = 1e-6;

/// Wakes each body that a search of the broadphase comes across.
class Waker : public btBroadphaseAabbCallback {
public:
    bool process(const btBroadphaseProxy* proxy) override {
        auto* object = static_cast<btCollisionObject*>(proxy->m_clientObject);
        if (!object->isStaticObject()) {
            object->activate(true);
        }
        return true;
    }
};

} // namespace

WorldCore::WorldCore()
    : dispatcher(&configuration), world(&dispatcher, &broadphase, &solver, &configuration) {
    world.setGravity(btVector3(0, 0, 0));
    // Bounds of what doesn't move stay as they are; whoever puts a body somewhere says so.
    world.setForceUpdateAllAabbs(false);
    world.getSolverInfo().m_numIterations = solverIterations;
}

WorldCore::~WorldCore() = default;

int WorldCore::step(double seconds) {
    if (!(seconds > 0) || !std::isfinite(seconds)) {
        return 0;
    }
    timeLeft += seconds;
    const double whole = std::floor(timeLeft / fixedStep + timeRounding);
    const int count = static_cast<int>(std::min(whole, static_cast<double>(std::numeric_limits<int>::max())));
    timeLeft = std::max(timeLeft - whole * fixedStep, 0.0);
    if (timeLeft < timeRounding * fixedStep) {
        timeLeft = 0;
    }
    for (int i = 0; i < count; ++i) {
        runFixedStep();
    }
    return count;
}

void WorldCore::runFixedStep() {
    // Without substeps of its own the engine takes the time as it is, in one step.
    world.stepSimulation(static_cast<btScalar>(fixedStep), 0);
    ++stepCount;
    watchBodies();
}

void WorldCore::watchBodies() {
    const auto& bodies = world.getNonStaticRigidBodies();
    for (int i = 0; i < bodies.size(); ++i) {
        if (bodies[i]->isActive()) {
            static_cast<BulletBody*>(bodies[i]->getUserPointer())->onStepped();
        }
    }
}

void WorldCore::setGravity(const Vector3& acceleration) {
    gravity = acceleration;
    auto& bodies = world.getNonStaticRigidBodies();
    for (int i = 0; i < bodies.size(); ++i) {
        bodies[i]->activate(true);
        setThresholds(*bodies[i]);
    }
    world.setGravity(toBullet(gravity));
}

void WorldCore::setThresholds(btRigidBody& body) const {
    // Slower than a small part of its own size a second, a body that lies on something is at rest. Where nothing pulls it
    // down it drifts, and hardly ever is.
    const double size = static_cast<BulletBody*>(body.getUserPointer())->getSize();
    const double part = length(gravity) > 0 ? 0.1 : 0.001;
    body.setSleepingThresholds(static_cast<btScalar>(part * size), static_cast<btScalar>(part));
}

void WorldCore::add(btRigidBody& body) {
    if (!body.isStaticObject()) {
        setThresholds(body);
    }
    world.addRigidBody(&body);
    wakeAround(body);
}

void WorldCore::remove(btRigidBody& body) {
    wakeAround(body);
    world.removeRigidBody(&body);
    if (world.getNumCollisionObjects() == 0) {
        // An empty engine starts over, so that a scene that is loaded again runs as it did the first time.
        broadphase.resetPool(&dispatcher);
        solver.reset();
        timeLeft = 0;
    }
}

void WorldCore::wakeAround(btRigidBody& body) {
    const btBroadphaseProxy* proxy = body.getBroadphaseHandle();
    if (!proxy) {
        return;
    }
    const btVector3 around = (proxy->m_aabbMax - proxy->m_aabbMin) * btScalar(0.05);
    Waker waker;
    broadphase.aabbTest(proxy->m_aabbMin - around, proxy->m_aabbMax + around, waker);
}

void WorldCore::updatePlace(btRigidBody& body) {
    world.updateSingleAabb(&body);
    wakeAround(body);
}

} // namespace tessarin::dynamics::bullet
