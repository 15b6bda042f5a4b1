#pragma once

#include <viewer/ModelLimits.h>

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::viewer {

/// Counts what the visual scenes of a COLLADA file would become, without making any of it.
/// @throws ViewerError, without the name of the file, if that is more than the limits allow, or if a node contains
/// itself, which OpenSceneGraph would follow until the stack ends.
void checkPicture(const xml_parser::XMLNode& root, const ModelLimits& limits);

} // namespace tessarin::viewer
