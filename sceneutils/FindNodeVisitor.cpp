#include <sceneutils/FindNodeVisitor.h>

#include <osg/Node>

namespace tessarin::sceneutils {

FindNodeVisitor::FindNodeVisitor(const std::string& name) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), _name(name) {
    setNodeMaskOverride(~osg::Node::NodeMask(0));
}

FindNodeVisitor::~FindNodeVisitor() = default;

void FindNodeVisitor::reset() {
    _first = nullptr;
}

void FindNodeVisitor::apply(osg::Node& node) {
    if (_first.valid()) {
        return;
    }
    if (node.getName() == _name) {
        _first = &node;
    } else {
        traverse(node);
    }
}

} // namespace tessarin::sceneutils
