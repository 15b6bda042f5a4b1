#include <agent/SceneGraph.h>

#include <osg/Group>
#include <osg/Node>
#include <osg/ref_ptr>

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

} // namespace

void removeFromGroup(osg::Group& group, osg::Node& node) {
    unsigned front = 0;
    for (unsigned back = group.getNumChildren(); front < back; ++front) {
        if (group.getChild(front) == &node) {
            group.removeChildren(front, 1);
            return;
        }
        if (group.getChild(--back) == &node) {
            group.removeChildren(back, 1);
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
