#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

#include <map>
#include <string>

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::viewer {

/// What the analytic shapes of a file's rigid bodies look like.
class ShapeGeometry {
public:
    /// @param collada the root element of a COLLADA file, which stays as long as this.
    explicit ShapeGeometry(const xml_parser::XMLNode& collada);

    /// In the frame of the node that the body moves; null if no body moves that node, or if its body has no shape that
    /// can be drawn.
    osg::ref_ptr<osg::Node> make(const std::string& nodeId) const;

private:
    std::map<std::string, const xml_parser::XMLNode*> bodiesByNode;
};

} // namespace tessarin::viewer
