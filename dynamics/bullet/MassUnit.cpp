#include <dynamics/bullet/MassUnit.h>

#include <dynamics/bullet/BulletBody.h>
#include <dynamics/bullet/JointConstraint.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// The engine's bounds are 8 and 14 millions.
constexpr double mostOfEngine = 1 << 22;

/// Beyond this inertia is as good as without bounds.
constexpr double mostInertia = 1e30;

void scaleJoint(btTypedConstraint& constraint, btScalar factor) {
    auto& joint = static_cast<JointConstraint&>(constraint);
    joint.getTranslationalLimitMotor()->m_maxMotorForce *= factor;
    for (int i = 0; i < 3; ++i) {
        joint.getRotationalLimitMotor(i)->m_maxMotorForce *= factor;
    }
    joint.scalePushes(factor);
}

/// What a contact pushed with in the last step is where the next one begins.
void scaleImpulses(btPersistentManifold& manifold, btScalar factor) {
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        btManifoldPoint& point = manifold.getContactPoint(i);
        point.m_appliedImpulse *= factor;
        point.m_appliedImpulseLateral1 *= factor;
        point.m_appliedImpulseLateral2 *= factor;
    }
}

} // namespace

void MassUnit::makeRoomFor(double mass, const Vector3& inertia) {
    const double greatest = std::min(std::max({mass, inertia[0], inertia[1], inertia[2]}), mostInertia);
    if (!(greatest > mostOfEngine * unit)) {
        return;
    }
    const double before = unit;
    unit = std::exp2(std::ceil(std::log2(greatest / mostOfEngine)));
    const auto factor = static_cast<btScalar>(before / unit);
    auto& bodies = world.getNonStaticRigidBodies();
    for (int i = 0; i < bodies.size(); ++i) {
        static_cast<BulletBody*>(bodies[i]->getUserPointer())->countMassIn(unit);
    }
    for (int i = 0; i < world.getNumConstraints(); ++i) {
        scaleJoint(*world.getConstraint(i), factor);
    }
    btDispatcher& dispatcher = *world.getDispatcher();
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        scaleImpulses(*dispatcher.getManifoldByIndexInternal(i), factor);
    }
}

} // namespace tessarin::dynamics::bullet
