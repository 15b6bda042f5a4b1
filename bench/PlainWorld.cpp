#include <bench/PlainWorld.h>

namespace tessarin::bench {

namespace {

constexpr btScalar half = 0.5F;
constexpr btScalar seconds = 1.0F / 60;

btTransform frameAt(const btVector3& place) {
    return btTransform(btMatrix3x3::getIdentity(), place);
}

} // namespace

PlainWorld::PlainWorld() : plane(btVector3(0, 0, 1), 0), box(btVector3(half, half, half)) {
    world.setGravity(btVector3(0, 0, -10));
    add(plane, 0, btVector3(0, 0, 0));
}

PlainWorld::~PlainWorld() {
    for (const auto& joint : joints) {
        world.removeConstraint(joint.get());
    }
    for (const auto& body : bodies) {
        world.removeRigidBody(body.get());
    }
}

void PlainWorld::add(btCollisionShape& shape, btScalar mass, const btVector3& place) {
    btVector3 inertia(0, 0, 0);
    if (mass > 0) {
        shape.calculateLocalInertia(mass, inertia);
    }
    btRigidBody::btRigidBodyConstructionInfo info(mass, nullptr, &shape, inertia);
    info.m_startWorldTransform.setOrigin(place);
    bodies.push_back(std::make_unique<btRigidBody>(info));
    world.addRigidBody(bodies.back().get());
}

void PlainWorld::addBox(double x, double y, double z) {
    add(box, 1, btVector3(static_cast<btScalar>(x), static_cast<btScalar>(y), static_cast<btScalar>(z)));
}

void PlainWorld::hangLastBox() {
    btRigidBody& last = *bodies.back();
    const btVector3 left(-half, 0, 0);
    const bool isFirst = joints.empty();
    btRigidBody& before = isFirst ? btTypedConstraint::getFixedBody() : *bodies[bodies.size() - 2];
    const btVector3 onBefore = isFirst ? last.getCenterOfMassPosition() + left : btVector3(half, 0, 0);
    auto joint = std::make_unique<btGeneric6DofSpring2Constraint>(before, last, frameAt(onBefore), frameAt(left));
    for (int axis = 3; axis < 6; ++axis) {
        joint->setLimit(axis, 1, -1); // free
    }
    world.addConstraint(joint.get(), true);
    joints.push_back(std::move(joint));
}

void PlainWorld::step() {
    world.stepSimulation(seconds, 0);
}

} // namespace tessarin::bench
