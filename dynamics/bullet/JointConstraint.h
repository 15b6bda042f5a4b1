#pragma once

#include <btBulletDynamicsCommon.h>

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

private:
    int rowCount = 0;
};

} // namespace tessarin::dynamics::bullet
