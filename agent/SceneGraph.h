#pragma once

#include <vector>

namespace osg {
class Group;
class Node;
} // namespace osg

namespace tessarin::agent {

/// Takes every entry of a node out of a group. The group is searched from both ends at once, since the first and the
/// last child are the ones that usually leave.
void removeFromGroup(osg::Group& group, osg::Node& node);

/// Takes a node out of all its parents.
void removeFromParents(osg::Node& node);

/// Takes many nodes out of a group in one go: taking them out one by one takes quadratic time.
/// @param leaving in the order in which they stand in the group; one that stands elsewhere may stay.
void removeManyFromGroup(osg::Group& group, const std::vector<osg::Node*>& leaving);

} // namespace tessarin::agent
