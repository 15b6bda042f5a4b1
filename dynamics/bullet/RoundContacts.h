#pragma once

#include <btBulletCollisionCommon.h>

namespace tessarin::dynamics::bullet {

/// Puts the contacts of a ball, and those of a cylinder or a capsule on a mesh, where and as they are on a flat
/// surface. At the edges within a mesh, and where a ball that rolls was in the step before, the engine finds others in
/// the same plane, which would push the body aside.
void mendRoundContacts(btPersistentManifold& manifold);

} // namespace tessarin::dynamics::bullet
