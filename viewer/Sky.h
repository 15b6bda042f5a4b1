#pragma once

#include <osg/Node>
#include <osg/Vec3>
#include <osg/ref_ptr>

namespace tessarin::viewer {

/// The colour at the horizon and below it, into which the ground fades.
const osg::Vec3 horizonColour(0.86f, 0.89f, 0.92f);

/// A background behind everything: a light haze at the horizon and below it that goes over into blue above. It has no
/// size and no place, so it takes part in no bound.
osg::ref_ptr<osg::Node> makeSky();

} // namespace tessarin::viewer
