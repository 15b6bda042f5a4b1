#include <sceneutils/NameNodes.h>

#include <osg/Group>
#include <osg/NodeVisitor>
#include <osg/ValueObject>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace tessarin::sceneutils {

namespace {

class IdVisitor : public osg::NodeVisitor {
public:
    explicit IdVisitor(const std::vector<std::string>& ids)
        : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), wanted(ids.begin(), ids.end()) {
        setNodeMaskOverride(~osg::Node::NodeMask(0));
    }

    void apply(osg::Node& node) override {
        std::string id;
        if (node.getUserValue("dae_node_id", id) && wanted.count(id) > 0)
            paths[id].push_back(getNodePath());
        traverse(node);
    }

    std::map<std::string, std::vector<osg::NodePath>> paths;

private:
    const std::unordered_set<std::string> wanted;
};

/// Renames the nodes that bear one of the names without being the one that is meant.
class Renamer : public osg::NodeVisitor {
public:
    explicit Renamer(const std::unordered_map<std::string, osg::Node*>& meant)
        : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), nodes(meant) {
        setNodeMaskOverride(~osg::Node::NodeMask(0));
    }

    void apply(osg::Node& node) override {
        const auto named = nodes.find(node.getName());
        if (named != nodes.end() && named->second != &node)
            node.setName(node.getName() + " (part)");
        traverse(node);
    }

private:
    const std::unordered_map<std::string, osg::Node*>& nodes;
};

} // namespace

std::map<std::string, std::vector<osg::NodePath>> findNodesById(osg::Node& model, const std::vector<std::string>& ids) {
    IdVisitor visitor(ids);
    model.accept(visitor);
    return std::move(visitor.paths);
}

void nameNodes(osg::Node& model, const std::vector<NameOfId>& names) {
    std::vector<std::string> ids;
    for (const auto& [id, name] : names)
        ids.push_back(id);
    std::unordered_map<std::string, std::vector<osg::Node*>> left; // the last is the next to be named
    for (const auto& [id, paths] : findNodesById(model, ids)) {
        for (const osg::NodePath& path : paths)
            left[id].push_back(path.back());
        std::reverse(left[id].begin(), left[id].end());
    }
    std::unordered_map<std::string, osg::Node*> meant;
    std::unordered_set<const osg::Node*> named;
    for (const auto& [id, name] : names) {
        std::vector<osg::Node*>& nodes = left[id];
        while (!nodes.empty() && !named.insert(nodes.back()).second)
            nodes.pop_back(); // met by way of another parent
        if (nodes.empty() || !meant.emplace(name, nodes.back()).second)
            continue;
        nodes.back()->setName(name);
        nodes.pop_back();
    }
    Renamer renamer(meant);
    model.accept(renamer);
}

} // namespace tessarin::sceneutils
