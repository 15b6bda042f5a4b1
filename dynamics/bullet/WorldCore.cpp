#include <dynamics/bullet/WorldCore.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/BulletConversions.h>
#include <dynamics/bullet/JointCore.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessarin::dynamics::bullet {

namespace {

constexpr int solverIterations = 30;

/// The part of a penetration that is taken back at once. More makes tall stacks tremble.
constexpr double penetrationRecovery = 0.1;

/// Against the size of a body: what is deeper comes of an impact and is taken back without adding speed, which would be
/// a bounce; doing that to resting contacts as well lets stacks creep.
constexpr double restingDepth = 0.02;

/// How long the engine may take at once, as part of the time in which a body falls by half its size. Two boxes of a
/// metre stacked on earth need 1/120 s; smaller ones fall apart in that.
constexpr double substepPart = 0.0375;
constexpr double longestSubstep = 1.0 / 120;
constexpr double shortestSubstep = 1.0 / 240;

/// Where all is at rest for so many fixed steps, longer ones will do.
constexpr int stepsBeforeRest = 10;
constexpr double restingFactor = 2;

/// Of the velocities below which bodies may fall asleep: what is slower is at rest.
constexpr btScalar restingPart = 0.5F;

/// As part of what gravity adds to a velocity in one step: contacts that change velocities by no more are solved.
constexpr double solvedPart = 0.002;

/// Against the size of a body: from there on contacts push at full strength.
constexpr double softDepth = 0.05;

/// Radians. A joint follows a body that turns by no more than about that in a substep.
constexpr double longestTurn = 1.5;
constexpr double mostSubstepsForTurns = 32;

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

/// For two convex shapes that nothing else is known of.
btCollisionAlgorithmCreateFunc& generalAlgorithm(btDefaultCollisionConfiguration& configuration) {
    return *configuration.getCollisionAlgorithmCreateFunc(CONVEX_HULL_SHAPE_PROXYTYPE, CONVEX_HULL_SHAPE_PROXYTYPE);
}

} // namespace

WorldCore::WorldCore()
    : dispatcher(&configuration), roundOnFlat(false, generalAlgorithm(configuration)),
      flatUnderRound(true, generalAlgorithm(configuration)), world(&dispatcher, &broadphase, &solver, &configuration),
      massUnit(world), ground(0, nullptr, &groundShape) {
    // A box on a plane, and whatever else has flat sides, gets its contacts at once, and not one a step.
    configuration.setPlaneConvexMultipointIterations(4, 4);
    configuration.setConvexConvexMultipointIterations(3, 3);
    chooseAlgorithms();
    world.setGravity(btVector3(0, 0, 0));
    // Bounds of what doesn't move stay as they are; whoever puts a body somewhere says so.
    world.setForceUpdateAllAabbs(false);
    btContactSolverInfo& info = world.getSolverInfo();
    info.m_numIterations = solverIterations;
    // A single direction of friction lets stacks creep in the other one.
    info.m_solverMode |= SOLVER_USE_2_FRICTION_DIRECTIONS;
    // Some contacts are given their directions by the world.
    info.m_solverMode |= SOLVER_ENABLE_FRICTION_DIRECTION_CACHING;
    info.m_erp2 = static_cast<btScalar>(penetrationRecovery);
    info.m_restitutionVelocityThreshold = 0; // bounces have their own
}

WorldCore::~WorldCore() = default;

void WorldCore::chooseAlgorithms() {
    // Exact ones, where the general search for nearest points lets what rolls roll aside.
    boxUnderBall.m_swapped = true;
    dispatcher.registerCollisionCreateFunc(SPHERE_SHAPE_PROXYTYPE, BOX_SHAPE_PROXYTYPE, &ballOnBox);
    dispatcher.registerCollisionCreateFunc(BOX_SHAPE_PROXYTYPE, SPHERE_SHAPE_PROXYTYPE, &boxUnderBall);
    for (const int round : {CYLINDER_SHAPE_PROXYTYPE, CAPSULE_SHAPE_PROXYTYPE}) {
        for (const int flat : {BOX_SHAPE_PROXYTYPE, STATIC_PLANE_PROXYTYPE}) {
            dispatcher.registerCollisionCreateFunc(round, flat, &roundOnFlat);
            dispatcher.registerCollisionCreateFunc(flat, round, &flatUnderRound);
        }
    }
}

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
    if (count > 0) {
        contacts.start();
        for (int i = 0; i < count; ++i) {
            runFixedStep();
        }
        contacts.finish();
    }
    return count;
}

void WorldCore::runFixedStep() {
    restingSteps = isAtRest() ? std::min(restingSteps + 1, stepsBeforeRest) : 0;
    const int substeps = countSubsteps();
    world.getSolverInfo().m_splitImpulsePenetrationThreshold = static_cast<btScalar>(-restingDepth * smallestSize);
    solver.setSoftDepth(static_cast<btScalar>(softDepth * smallestSize));
    for (int i = 0; i < substeps; ++i) {
        runSubstep(fixedStep / substeps);
    }
    contacts.join();
    watchBodies();
}

void WorldCore::runSubstep(double seconds) {
    for (JointCore* joint : sprung) {
        joint->pushSprings(seconds);
    }
    btContactSolverInfo& info = world.getSolverInfo();
    // Contacts begin with what they pushed with in the last step, and push with more in a longer one.
    info.m_warmstartingFactor = static_cast<btScalar>(lastSubstep > 0 ? seconds / lastSubstep : 1);
    lastSubstep = seconds;
    const double solved = solvedPart * length(gravity) * seconds;
    info.m_leastSquaresResidualThreshold = static_cast<btScalar>(solved * solved);
    // Told to make no steps of its own, the engine takes the time as it is, in one step.
    world.stepSimulation(static_cast<btScalar>(seconds), 0);
    contacts.gather(dispatcher, massUnit.get());
}

bool WorldCore::isAtRest() const {
    const auto& bodies = world.getNonStaticRigidBodies();
    for (int i = 0; i < bodies.size(); ++i) {
        const btRigidBody& body = *bodies[i];
        const btScalar linear = restingPart * body.getLinearSleepingThreshold();
        const btScalar angular = restingPart * body.getAngularSleepingThreshold();
        if (body.isActive() && (body.getLinearVelocity().length2() > linear * linear ||
                                body.getAngularVelocity().length2() > angular * angular ||
                                // Springs and motors work through whatever little their bodies move.
                                static_cast<const BulletBody*>(body.getUserPointer())->hasJoints())) {
            return false;
        }
    }
    return true;
}

int WorldCore::countSubsteps() const {
    const double pull = length(gravity);
    const double wanted = pull > 0 && smallestSize > 0 ? fixedStep / (substepPart * std::sqrt(smallestSize / pull)) : 0;
    const double finest = std::clamp(wanted, fixedStep / longestSubstep, fixedStep / shortestSubstep);
    const double count = restingSteps < stepsBeforeRest ? finest : finest / restingFactor;
    const double forTurns = std::min(fastestTurnOnJoint() * fixedStep / longestTurn, mostSubstepsForTurns);
    return static_cast<int>(std::ceil(std::max(count, forTurns) - timeRounding));
}

double WorldCore::fastestTurnOnJoint() const {
    btScalar square = 0;
    for (int i = 0; i < world.getNumConstraints(); ++i) {
        const btTypedConstraint& joint = *world.getConstraint(i);
        for (const btRigidBody* body : {&joint.getRigidBodyA(), &joint.getRigidBodyB()}) {
            if (body->isActive()) {
                square = std::max(square, body->getAngularVelocity().length2());
            }
        }
    }
    return std::sqrt(static_cast<double>(square));
}

void WorldCore::watchBodies() {
    smallestSize = 0;
    const auto& bodies = world.getNonStaticRigidBodies();
    for (int i = 0; i < bodies.size(); ++i) {
        auto* body = static_cast<BulletBody*>(bodies[i]->getUserPointer());
        body->onStepped();
        if (bodies[i]->isActive()) {
            noteSize(body->getSize());
        }
    }
}

void WorldCore::noteSize(double size) {
    if (!(smallestSize > 0) || size < smallestSize) {
        smallestSize = size;
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
    // A body that for a while moves by no more than part of its size a second is at rest, unless that is what it falls
    // with meanwhile. Where nothing pulls it down it drifts, and hardly ever is at rest.
    const auto& owner = *static_cast<BulletBody*>(body.getUserPointer());
    const double size = owner.getSize();
    const double pull = length(gravity);
    // What hangs on a joint may be as slow where a swing turns round, but weight soon brings it back.
    const bool settles = pull > 0 && !owner.hasJoints();
    const double part = settles ? 0.2 : 0.001;
    const double linear = settles ? std::min(part * size, 0.05 * pull) : std::max(part * size, 1e-4 * pull);
    // A ball on a slope of a degree has to be faster before it counts as one that rests, or else it would stay there.
    const double rolling = settles && owner.isRound() ? std::min(linear, 0.008 * pull) : linear;
    body.setSleepingThresholds(static_cast<btScalar>(rolling), static_cast<btScalar>(part));
}

void WorldCore::add(btRigidBody& body) {
    if (!body.isStaticObject()) {
        setThresholds(body);
        noteSize(static_cast<BulletBody*>(body.getUserPointer())->getSize());
        restingSteps = 0;
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
        massUnit.reset();
        timeLeft = 0;
        restingSteps = 0;
        lastSubstep = 0;
    }
}

void WorldCore::add(btTypedConstraint& constraint, bool disableCollisions) {
    world.addConstraint(&constraint, disableCollisions);
}

void WorldCore::remove(btTypedConstraint& constraint) {
    world.removeConstraint(&constraint);
}

void WorldCore::addSprung(JointCore& joint) {
    joint.sprungIndex = sprung.size();
    sprung.push_back(&joint);
}

void WorldCore::removeSprung(JointCore& joint) {
    sprung[joint.sprungIndex] = sprung.back();
    sprung[joint.sprungIndex]->sprungIndex = joint.sprungIndex;
    sprung.pop_back();
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
