#pragma once

#include <btBulletDynamicsCommon.h>

#include <vector>

namespace tessarin::dynamics::bullet {

/// Passes the loads of points of contact on to those that take their places.
///
/// The engine keeps at most four points of a pair of bodies and exchanges them while the bodies hardly move: the two
/// faces of bricks that are a little turned cross in eight points. A new point begins without a load, so that the
/// solver would have to find anew what the bodies push with, which makes stacks tremble.
class ContactLoads {
public:
    /// To be called before the engine looks for contacts.
    void note(btDispatcher& dispatcher);

    /// To be called after it has.
    void passOn(btDispatcher& dispatcher) const;

private:
    std::vector<btScalar> loads;
};

} // namespace tessarin::dynamics::bullet
