#include <agent/SceneGraph.h>

#include <osg/Group>
#include <osg/MatrixTransform>
#include <osg/Node>
#include <osg/ref_ptr>

#include <typeinfo>
#include <unordered_set>

namespace tessarin::agent {

namespace {

/// The children of a group in alternating runs of those that leave and those that stay.
struct Runs {
    struct Run {
        unsigned begin;
        unsigned count;
    };

    Runs(osg::Group& group, const std::unordered_set<const osg::Node*>& leaving) {
        for (unsigned i = 0; i < group.getNumChildren(); ++i) {
            osg::Node* const node = group.getChild(i);
            if (leaving.count(node) == 0) {
                staying.emplace_back(node);
                stayerHasOtherParents = stayerHasOtherParents || node->getNumParents() > 1;
            } else if (!runs.empty() && runs.back().begin + runs.back().count == i) {
                ++runs.back().count;
            } else {
                runs.push_back({i, 1});
            }
        }
    }

    std::vector<Run> runs;
    std::vector<osg::ref_ptr<osg::Node>> staying;
    bool stayerHasOtherParents = false;
};

/// Shows the children's array of any group.
struct Children : osg::Group {
    static osg::NodeList& of(osg::Group& group) { return group.*&Children::_children; }
};

/// OpenSceneGraph closes the gap by assignments that count references, which takes ten times as long as moving the node
/// to the end first. A group of another class than the agents' own may have something to say about each index.
void removeAt(osg::Group& group, unsigned index) {
    if (typeid(group) == typeid(osg::MatrixTransform)) {
        osg::NodeList& children = Children::of(group);
        for (; index + 1 < children.size(); ++index)
            children[index].swap(children[index + 1]);
    }
    group.removeChildren(index, 1);
}

} // namespace

void removeFromGroup(osg::Group& group, osg::Node& node) {
    unsigned front = 0;
    for (unsigned back = group.getNumChildren(); front < back; ++front) {
        if (group.getChild(front) == &node) {
            removeAt(group, front);
            return;
        }
        if (group.getChild(--back) == &node) {
            removeAt(group, back);
            return;
        }
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
    const Runs found(group, std::unordered_set<const osg::Node*>(leaving.begin(), leaving.end()));
    // Taking out run after run moves the rest of the group each time. With many runs it is rather emptied and filled
    // again, unless that would change the order of somebody's parents, and with it the first path to the root.
    constexpr std::size_t fewRuns = 32;
    if (found.runs.size() <= fewRuns || found.stayerHasOtherParents) {
        for (auto run = found.runs.rbegin(); run != found.runs.rend(); ++run)
            group.removeChildren(run->begin, run->count);
        return;
    }
    group.removeChildren(0, group.getNumChildren());
    for (const osg::ref_ptr<osg::Node>& node : found.staying)
        group.addChild(node);
}

} // namespace tessarin::agent
