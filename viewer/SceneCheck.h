#pragma once

#include <viewer/ModelLimits.h>

#include <osg/Node>

namespace tessarin::viewer {

/// Makes sure that a model that a plugin of OpenSceneGraph has read can be walked, drawn and passed on: primitives that
/// reach beyond their vertices and arrays that are too short for them go, and so do references to further files, whose
/// content stays where it is loaded.
/// @return how many sets of primitives went.
/// @throws ViewerError without the name of the file if the model is larger than the limits, or nested too deeply.
unsigned makeSafe(osg::Node& model, const ModelLimits& limits);

} // namespace tessarin::viewer
