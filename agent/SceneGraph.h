#pragma once

#include <vector>

namespace osg {
class Group;
class Node;
} // namespace osg

namespace tessarin::agent {

/// Takes one entry of a node out of a group, if there is one. The group is searched from both ends at once, since the
/// first and the last child are the ones that usually leave.
void removeFromGroup(osg::Group& group, osg::Node& node);

/// Takes a node out of all its parents.
void removeFromParents(osg::Node& node);

/// Takes many nodes, with all their entries, out of a group in one go: one by one takes quadratic time.
void removeManyFromGroup(osg::Group& group, const std::vector<osg::Node*>& leaving);

} // namespace tessarin::agent
