#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

#include <string>

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::viewer {

/// What the analytic shapes of a rigid body look like, in the frame of the node that the body moves.
/// @param collada the root element of a COLLADA file.
/// @param nodeId the id of the node.
/// @return null if no body moves the node, or if its body has no shape that can be drawn.
osg::ref_ptr<osg::Node> makeShapeGeometry(const xml_parser::XMLNode& collada, const std::string& nodeId);

} // namespace tessarin::viewer
