#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

#include <map>
#include <set>
#include <string>

namespace tessarin::viewer {

/// The path to each node that OpenSceneGraph's COLLADA plugin made from one of these ids; of several, to the first.
std::map<std::string, osg::NodePath> findNodesById(osg::Node& model, const std::set<std::string>& ids);

/// Takes the nodes that rigid bodies move out of a model, and gives back the model as two parts under one group: first
/// a switched-off store of those nodes, then the rest, the scenery.
///
/// Each stored node is a MatrixTransform of its own name that stands at the pose of its body: the node's place in the
/// whole model without the scale, which goes below it. So an agent that takes over the node's place, with the body's
/// pose, shows it as the model did. What hangs below a body's node goes along, but for other bodies' nodes; no other
/// node in the store bears a body's name.
osg::ref_ptr<osg::Node> separateBodies(osg::Node& model, const std::set<std::string>& bodyNodeIds);

/// Shows nodes of the store with the scenery after all: those with none of these names, which no body will show. Does
/// nothing to a model that separateBodies left whole.
void showStoredWithout(osg::Node& model, const std::set<std::string>& names);

} // namespace tessarin::viewer
