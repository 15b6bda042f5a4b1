#include <dynamics/bullet/JointConstraint.h>

namespace tessarin::dynamics::bullet {

namespace {

/// The cosine of how far the axis of a row may turn in a step.
constexpr btScalar sameAxis = 0.9F;

} // namespace

void JointConstraint::getInfo1(btConstraintInfo1* info) {
    btGeneric6DofSpring2Constraint::getInfo1(info);
    rowCount = info->m_numConstraintRows;
}

void JointConstraint::getInfo2(btConstraintInfo2* info) {
    btGeneric6DofSpring2Constraint::getInfo2(info);
    // The axes are the first body's and turn with it. So at the second frame's origin, and nowhere else, the velocity
    // of one body against the other along an axis is that at which the coordinate along the axis changes.
    const btVector3& point = getCalculatedTransformB().getOrigin();
    const btVector3 armA = point - m_rbA.getCenterOfMassPosition();
    const btVector3 armB = point - m_rbB.getCenterOfMassPosition();
    for (int row = 0; row < rowCount; ++row) {
        const int begin = row * info->rowskip;
        const btScalar* linear = info->m_J1linearAxis + begin;
        const btVector3 axis(linear[0], linear[1], linear[2]);
        if (axis.isZero()) {
            continue; // about an axis
        }
        const btVector3 turnA = armA.cross(axis);
        const btVector3 turnB = armB.cross(-axis);
        for (int i = 0; i < 3; ++i) {
            info->m_J1angularAxis[begin + i] = turnA[i];
            info->m_J2angularAxis[begin + i] = turnB[i];
        }
    }
}

btScalar JointConstraint::getLastPush(int row, const Push& now, btScalar seconds) const {
    if (row >= pushCount) {
        return 0;
    }
    const Push& last = pushes[static_cast<std::size_t>(row)];
    const bool isSame = last.isLinear == now.isLinear && last.axis.dot(now.axis) > sameAxis;
    return isSame ? last.impulse * (seconds / pushSeconds) : 0;
}

void JointConstraint::keepPush(int row, const Push& push, btScalar seconds) {
    pushes[static_cast<std::size_t>(row)] = push;
    pushCount = row + 1;
    pushSeconds = seconds;
}

void JointConstraint::scalePushes(btScalar factor) {
    for (Push& push : pushes) {
        push.impulse *= factor;
    }
}

} // namespace tessarin::dynamics::bullet
