#pragma once

#include <dynamics/bullet/Export.h>
#include <dynamics/bullet/LoadLimits.h>

#include <gmtl/Matrix.h>

#include <string>
#include <vector>

namespace tessarin::dynamics::bullet {

/// A body of a COLLADA file and the node of its visual model that it moves.
struct ColladaBodyNode {
    /// Empty if the node has none.
    std::string nodeId;

    /// The name of the body, which no other body of the file has. It is that of the node where no other body's node
    /// before it has the same.
    std::string bodyName;

    /// From the node to the world, scale included, up-axis turned. A node that is instanced several times stands in
    /// several places; this is the one that the body takes.
    gmtl::Matrix<double, 4, 4> nodeToWorld;
};

/// The bodies of a COLLADA file in the order in which BulletDynamicsWorld::loadScene reports them, also those that it
/// leaves out because they have no shape that can be used. For loaders that name the nodes of a model after its bodies;
/// see sceneutils::nameNodes. What is wrong with the file loadScene says, and this doesn't.
/// @param limits those of the world.
/// @return empty for a file that can't be read or goes beyond the limits.
TESSARIN_DYNAMICS_BULLET_EXPORT std::vector<ColladaBodyNode> readColladaBodyNodes(const std::string& filePath,
                                                                                  const LoadLimits& limits = {});

} // namespace tessarin::dynamics::bullet
