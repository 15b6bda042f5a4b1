#pragma once

#include <dynamics/Export.h>
#include <dynamics/Forward.h>

namespace tessarin::dynamics {

/// Receives the bodies and joints that DynamicsWorld::loadScene creates, each once, on the caller's thread and before
/// loadScene returns. The functor takes ownership of every object that it is given. Bodies and joints come in any
/// order.
struct TESSARIN_DYNAMICS_EXPORT DynamicsBodyFunctor {
    /// @param joint a new joint, never null; it belongs to the functor from now on.
    virtual void visitJoint(DynamicsJoint* joint) = 0;

    /// @param body a new body, never null; it belongs to the functor from now on.
    virtual void visitBody(DynamicsBody* body) = 0;

protected:
    // Functors are locals of their caller and are never deleted through this base.
    ~DynamicsBodyFunctor() = default;
};

} // namespace tessarin::dynamics
