#pragma once

#include <osg/Vec3d>

namespace tessarin::viewer {

/// Where up is in the simulation's world, of length 1: against gravity, or +Z where nothing pulls.
osg::Vec3d findUp();

} // namespace tessarin::viewer
