#pragma once

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/MatrixTransform>
#include <osg/PositionAttitudeTransform>
#include <osg/ShapeDrawable>
#include <osg/Switch>

#include <typeinfo>

namespace tessarin::sceneutils {

/// What a search does with a node that doesn't bear the name.
enum class PlainNode {
    LEAF,  ///< it has no children
    GROUP, ///< its children are those of its osg::Group, in their order
    OTHER, ///< it has to be asked: its class may traverse as it likes
};

/// Goes by the exact class, so that a class derived from one of these is asked.
inline PlainNode plainNodeOf(const osg::Node& node) {
    const std::type_info& type = typeid(node);
    if (type == typeid(osg::MatrixTransform) || type == typeid(osg::Group) || type == typeid(osg::Geode) ||
        type == typeid(osg::Switch) || type == typeid(osg::PositionAttitudeTransform))
        return PlainNode::GROUP;
    if (type == typeid(osg::Geometry) || type == typeid(osg::Node) || type == typeid(osg::ShapeDrawable))
        return PlainNode::LEAF;
    return PlainNode::OTHER;
}

} // namespace tessarin::sceneutils
