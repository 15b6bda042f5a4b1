#pragma once

#include <osg/Matrixd>
#include <osg/Node>
#include <osg/ref_ptr>

#include <set>
#include <string>
#include <vector>

namespace tessarin::viewer {

/// What a model has to show for a rigid body.
struct BodyNode {
    std::string nodeId;
    std::string bodyName;
    osg::Matrixd nodeToWorld;
};

/// Takes the nodes that rigid bodies move out of a model, and gives back the model as two parts under one group: first
/// a switched-off store of those nodes, then the rest, the scenery.
///
/// Each stored node is a MatrixTransform with the name of its body that stands at the pose of the node: the node's
/// place in the whole model without the scale, which goes below it. So an agent that takes over the node's place, with
/// the body's pose, shows it as the model did. What hangs below a body's node goes along, but for other bodies' nodes;
/// no other node in the store bears a body's name.
///
/// A node that is instanced several times gives each of its bodies the instance that stands where the body does, else
/// the first; a body for which no instance is left shows the same as the first one. What no body takes is scenery.
osg::ref_ptr<osg::Node> separateBodies(osg::Node& model, const std::vector<BodyNode>& bodies);

/// Shows nodes of the store with the scenery after all: those with none of these names, which no body will show. Does
/// nothing to a model that separateBodies left whole.
void showStoredWithout(osg::Node& model, const std::set<std::string>& names);

} // namespace tessarin::viewer
