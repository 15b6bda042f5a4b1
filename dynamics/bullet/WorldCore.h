#pragma once

#include <dynamics/bullet/Affine.h>
#include <dynamics/bullet/ContactList.h>
#include <dynamics/bullet/EngineSolver.h>
#include <dynamics/bullet/EngineWorld.h>
#include <dynamics/bullet/MassUnit.h>
#include <dynamics/bullet/RoundOnFlat.h>

#include <BulletCollision/CollisionDispatch/btSphereBoxCollisionAlgorithm.h>
#include <btBulletDynamicsCommon.h>

#include <vector>

namespace tessarin::dynamics::bullet {

class JointCore;

/// The engine behind a world. The world and each of its bodies and joints hold it, so it goes with the last of them and
/// nobody ever meets an engine that is gone.
class WorldCore {
public:
    WorldCore();
    ~WorldCore();

    WorldCore(const WorldCore&) = delete;
    WorldCore& operator=(const WorldCore&) = delete;

    /// As BulletDynamicsWorld::step.
    int step(double seconds);

    double getFixedStep() const { return fixedStep; }
    void setFixedStep(double seconds) { fixedStep = seconds; }

    Vector3 getGravity() const { return gravity; }

    /// Wakes all bodies, since none rests any longer as it did.
    void setGravity(const Vector3& acceleration);

    /// The body's user pointer must be its BulletBody.
    void add(btRigidBody& body);

    /// Wakes what is near.
    void remove(btRigidBody& body);

    /// Wakes the bodies whose bounds meet those that the body had when it was last seen, itself included.
    void wakeAround(btRigidBody& body);

    /// To be called after a body was put somewhere: from here on it is seen there. Wakes what is near.
    void updatePlace(btRigidBody& body);

    /// A body of no mass at the origin, which is in no world, for joints to hold on to the world by.
    btRigidBody& getGround() { return ground; }

    void add(btTypedConstraint& constraint, bool disableCollisions);
    void remove(btTypedConstraint& constraint);

    /// Joints whose springs push before each step of the engine.
    void addSprung(JointCore& joint);
    void removeSprung(JointCore& joint);

    /// When the body may fall asleep, by its size, its joints and gravity. Of a static body nothing.
    void setThresholds(btRigidBody& body) const;

    /// Has to have room for a body before that is made.
    MassUnit& getMassUnit() { return massUnit; }

    ContactList& getContacts() { return contacts; }

private:
    void chooseAlgorithms();
    void runFixedStep();
    void runSubstep(double seconds);
    int countSubsteps() const;
    bool isAtRest() const;

    /// Radians per second.
    double fastestTurnOnJoint() const;
    void watchBodies();
    void noteSize(double size);

    btDefaultCollisionConfiguration configuration;
    btCollisionDispatcher dispatcher;
    btSphereBoxCollisionAlgorithm::CreateFunc ballOnBox;
    btSphereBoxCollisionAlgorithm::CreateFunc boxUnderBall;
    RoundOnFlat::CreateFunc roundOnFlat;
    RoundOnFlat::CreateFunc flatUnderRound;
    btDbvtBroadphase broadphase;
    EngineSolver solver;
    EngineWorld world;
    MassUnit massUnit;
    btEmptyShape groundShape;
    btRigidBody ground;
    ContactList contacts;
    std::vector<JointCore*> sprung;

    Vector3 gravity = {0, 0, 0};
    double fixedStep = 1.0 / 60;
    double timeLeft = 0;

    /// For how many fixed steps all bodies have been at rest, or asleep.
    int restingSteps = 0;

    /// How long the engine's last step was.
    double lastSubstep = 0;

    /// Of the bodies that were awake in the last step or came since; 0 if there are none.
    double smallestSize = 0;
};

} // namespace tessarin::dynamics::bullet
