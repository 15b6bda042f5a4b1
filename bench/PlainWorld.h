#pragma once

#include <btBulletDynamicsCommon.h>

#include <memory>
#include <vector>

namespace tessarin::bench {

/// Bullet as it comes, with boxes of a metre and a kilogramme on a plane.
class PlainWorld {
public:
    PlainWorld();
    ~PlainWorld();

    PlainWorld(const PlainWorld&) = delete;
    PlainWorld& operator=(const PlainWorld&) = delete;

    void addBox(double x, double y, double z);

    /// Hangs the last box by the middle of its left side: on the right one of the box before it, else where it is.
    void hangLastBox();

    /// One step of 1/60 s.
    void step();

private:
    void add(btCollisionShape& shape, btScalar mass, const btVector3& place);

    btDefaultCollisionConfiguration configuration;
    btCollisionDispatcher dispatcher{&configuration};
    btDbvtBroadphase broadphase;
    btSequentialImpulseConstraintSolver solver;
    btDiscreteDynamicsWorld world{&dispatcher, &broadphase, &solver, &configuration};
    btStaticPlaneShape plane;
    btBoxShape box;
    std::vector<std::unique_ptr<btRigidBody>> bodies;
    std::vector<std::unique_ptr<btTypedConstraint>> joints;
};

} // namespace tessarin::bench
