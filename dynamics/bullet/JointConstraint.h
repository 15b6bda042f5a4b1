#pragma once

#include <btBulletDynamicsCommon.h>

#include <array>

namespace tessarin::dynamics::bullet {

/// The engine's constraint with six axes, whose forces act on both bodies at one point.
///
/// The engine lets a force along an axis act on each body at its own frame. Where the two frames are apart along an
/// axis that is free, a force across that axis and its reaction are a couple then, which turns the bodies faster and
/// faster.
class JointConstraint : public btGeneric6DofSpring2Constraint {
public:
    using btGeneric6DofSpring2Constraint::btGeneric6DofSpring2Constraint;

    void getInfo1(btConstraintInfo1* info) override;
    void getInfo2(btConstraintInfo2* info) override;

    /// What one of the constraint's rows pushes with, along or about an axis.
    struct Push {
        btVector3 axis = btVector3(0, 0, 0);
        btScalar impulse = 0;
        bool isLinear = false;
    };

    /// What the row pushed with in the last step if it was the same row, in a step of the length given; else 0.
    btScalar getLastPush(int row, const Push& now, btScalar seconds) const;

    /// To be called for each row after it was solved, in their order.
    void keepPush(int row, const Push& push, btScalar seconds);

    void scalePushes(btScalar factor);
    void forgetPushes() { pushCount = 0; }

private:
    int rowCount = 0;

    /// Each axis has two stops, a motor and a spring.
    std::array<Push, 24> pushes;
    int pushCount = 0;
    btScalar pushSeconds = 0;
};

} // namespace tessarin::dynamics::bullet
