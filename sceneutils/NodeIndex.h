#pragma once

#include <sceneutils/Export.h>

#include <osg/Node>

#include <functional>
#include <string>
#include <unordered_map>

namespace tessarin::sceneutils {

/// Answers for one graph, as it was when the index was made, what a FindNodeVisitor finds in it: one walk for any
/// number of names. It notices no change of the graph and doesn't keep the nodes alive, so it is to be dropped before
/// anybody may change names or children.
class TESSARIN_SCENEUTILS_EXPORT NodeIndex {
public:
    /// @param isForeign tells of nodes that make an index useless, since what is below them changes all the time; the
    /// index is then incomplete, and so it is if there is a node of a class that may traverse its children as it likes.
    NodeIndex(osg::Node& root, const std::function<bool(const osg::Node&)>& isForeign);

    /// False if the index can't answer.
    bool isComplete() const { return complete; }

    /// The first node of that name, depth first, a node before its children; null if there is none.
    osg::Node* find(const std::string& name) const;

private:
    std::unordered_map<std::string, osg::Node*> nodes;
    bool complete = true;
};

} // namespace tessarin::sceneutils
