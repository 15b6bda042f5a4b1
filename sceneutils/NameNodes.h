#pragma once

#include <sceneutils/Export.h>

#include <osg/Node>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tessarin::sceneutils {

/// The paths from the root to every node that OpenSceneGraph's COLLADA plugin made from an element with one of these
/// ids, in the order of a walk. An element that is instanced several times has several nodes.
TESSARIN_SCENEUTILS_EXPORT std::map<std::string, std::vector<osg::NodePath>>
findNodesById(osg::Node& model, const std::vector<std::string>& ids);

/// An id of a COLLADA node, and a name for the node.
using NameOfId = std::pair<std::string, std::string>;

/// Names nodes of a COLLADA model so that a FindNodeVisitor finds each by its name: COLLADA wants only ids to be
/// different, and nodes often share names. Of several names for one id, each goes to a further instance of the node, as
/// far as there are any. Other nodes that bear one of the names get " (part)" behind theirs; all others stay as they
/// are. Doing it again changes nothing.
/// @code
/// std::vector<sceneutils::NameOfId> names;
/// for (const dynamics::bullet::ColladaBodyNode& body : dynamics::bullet::readColladaBodyNodes(path))
///     names.emplace_back(body.nodeId, body.bodyName);
/// sceneutils::nameNodes(*model, names);
/// @endcode
TESSARIN_SCENEUTILS_EXPORT void nameNodes(osg::Node& model, const std::vector<NameOfId>& names);

} // namespace tessarin::sceneutils
