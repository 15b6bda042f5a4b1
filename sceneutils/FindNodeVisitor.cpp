#include <sceneutils/FindNodeVisitor.h>

#include <sceneutils/PlainNode.h>

namespace tessarin::sceneutils {

FindNodeVisitor::FindNodeVisitor(const std::string& name) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), _name(name) {
    setNodeMaskOverride(~osg::Node::NodeMask(0));
}

FindNodeVisitor::~FindNodeVisitor() = default;

void FindNodeVisitor::reset() {
    _first = nullptr;
}

void FindNodeVisitor::apply(osg::Node& node) {
    if (!_first.valid()) {
        search(node, plainNodeOf(node));
    }
}

/// True if the walk is over. Most nodes are of classes whose children need no visitor to be walked through, which takes
/// a fraction of the time.
bool FindNodeVisitor::search(osg::Node& node, PlainNode kind) {
    if (node.getName() == _name) {
        _first = &node;
        return true;
    }
    if (kind == PlainNode::OTHER || getTraversalMode() != TRAVERSE_ALL_CHILDREN) {
        traverse(node);
        return _first.valid();
    }
    osg::Group* const group = kind == PlainNode::GROUP ? node.asGroup() : nullptr;
    for (unsigned i = 0; group && i < group->getNumChildren(); ++i) {
        if (searchChild(*group->getChild(i))) {
            return true;
        }
    }
    return false;
}

bool FindNodeVisitor::searchChild(osg::Node& child) {
    const PlainNode kind = plainNodeOf(child);
    if (kind == PlainNode::OTHER) {
        child.accept(*this);
        return _first.valid();
    }
    pushOntoNodePath(&child);
    const bool isOver = search(child, kind);
    popFromNodePath();
    return isOver;
}

} // namespace tessarin::sceneutils
