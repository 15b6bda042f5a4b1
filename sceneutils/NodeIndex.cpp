#include <sceneutils/NodeIndex.h>

#include <sceneutils/PlainNode.h>

#include <unordered_set>
#include <vector>

namespace tessarin::sceneutils {

NodeIndex::NodeIndex(osg::Node& root, const std::function<bool(const osg::Node&)>& isForeign) {
    std::unordered_set<const osg::Node*> shared; // what was met by way of another parent brings no new name
    std::vector<osg::Node*> open = {&root};
    while (complete && !open.empty()) {
        osg::Node* const node = open.back();
        open.pop_back();
        if (node->getNumParents() > 1 && !shared.insert(node).second)
            continue;
        const PlainNode kind = plainNodeOf(*node);
        complete = kind != PlainNode::OTHER && !isForeign(*node);
        nodes.emplace(node->getName(), node);
        osg::Group* const group = kind == PlainNode::GROUP ? node->asGroup() : nullptr;
        for (unsigned i = group ? group->getNumChildren() : 0; i > 0; --i)
            open.push_back(group->getChild(i - 1));
    }
}

osg::Node* NodeIndex::find(const std::string& name) const {
    const auto found = nodes.find(name);
    return found == nodes.end() ? nullptr : found->second;
}

} // namespace tessarin::sceneutils
