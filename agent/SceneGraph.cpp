#include <agent/SceneGraph.h>

#include <osg/Group>
#include <osg/Node>
#include <osg/ref_ptr>

#include <algorithm>

namespace tessarin::agent {

namespace {

unsigned countEntries(const osg::Group& group, const osg::Node& node) {
    const auto& parents = node.getParents();
    return static_cast<unsigned>(std::count(parents.begin(), parents.end(), &group));
}

unsigned findEntry(osg::Group& group, const osg::Node& node) {
    unsigned front = 0;
    for (unsigned back = group.getNumChildren(); front < back; ++front) {
        if (group.getChild(front) == &node)
            return front;
        if (group.getChild(--back) == &node)
            return back;
    }
    return group.getNumChildren();
}

} // namespace

void removeFromGroup(osg::Group& group, osg::Node& node) {
    const osg::ref_ptr<osg::Node> keep(&node);
    for (unsigned entries = countEntries(group, node); entries > 0; --entries) {
        const unsigned index = findEntry(group, node);
        if (index == group.getNumChildren() || !group.removeChildren(index, 1))
            return;
    }
}

void removeFromParents(osg::Node& node) {
    const osg::ref_ptr<osg::Node> keep(&node);
    while (node.getNumParents() > 0) {
        const unsigned before = node.getNumParents();
        removeFromGroup(*node.getParent(before - 1), node);
        if (node.getNumParents() == before)
            return;
    }
}

void removeManyFromGroup(osg::Group& group, const std::vector<osg::Node*>& leaving) {
    const unsigned count = group.getNumChildren();
    std::vector<osg::ref_ptr<osg::Node>> staying;
    auto next = leaving.begin();
    for (unsigned i = 0; i < count; ++i) {
        if (next != leaving.end() && *next == group.getChild(i))
            ++next;
        else
            staying.emplace_back(group.getChild(i));
    }
    group.removeChildren(0, count);
    for (const osg::ref_ptr<osg::Node>& node : staying)
        group.addChild(node);
}

} // namespace tessarin::agent
