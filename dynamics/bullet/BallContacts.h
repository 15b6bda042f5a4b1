#pragma once

#include <btBulletCollisionCommon.h>

namespace tessarin::dynamics::bullet {

/// Leaves one point of contact where a ball touches a flat surface. At the edges within a mesh, and where a ball that
/// rolls was in the step before, the engine finds others in the same plane, which would push the ball aside.
void mendBallContacts(btPersistentManifold& manifold);

} // namespace tessarin::dynamics::bullet
