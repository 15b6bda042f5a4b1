#include <bench/Trees.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace tessarin::bench {

using agent::AgentNode;

std::vector<AgentNode*> makeAgents(std::int64_t size) {
    std::vector<AgentNode*> agents;
    agents.reserve(static_cast<std::size_t>(size));
    agents.push_back(new AgentNode(nameOfNode(0)));
    for (std::int64_t i = 1; i < size; ++i) {
        agents.push_back(agents[static_cast<std::size_t>((i - 1) / fanOut)]->addChild(nameOfNode(i)));
    }
    return agents;
}

std::vector<osg::MatrixTransform*> makeTransforms(std::int64_t size, osg::ref_ptr<osg::MatrixTransform>& root) {
    const auto make = [](std::int64_t index) {
        auto* const transform = new osg::MatrixTransform;
        transform->setName("AgentNode MatTrans " + nameOfNode(index));
        transform->setUserData(new osg::Referenced);
        return transform;
    };
    std::vector<osg::MatrixTransform*> transforms;
    transforms.reserve(static_cast<std::size_t>(size));
    root = make(0);
    transforms.push_back(root.get());
    for (std::int64_t i = 1; i < size; ++i) {
        osg::MatrixTransform* const transform = make(i);
        transforms[static_cast<std::size_t>((i - 1) / fanOut)]->addChild(transform);
        transforms.push_back(transform);
    }
    return transforms;
}

std::vector<std::int64_t> pickLeaves(std::int64_t size, std::int64_t count) {
    const std::int64_t firstLeaf = (size - 2) / fanOut + 1;
    std::vector<std::int64_t> leaves(static_cast<std::size_t>(size - firstLeaf));
    std::iota(leaves.begin(), leaves.end(), firstLeaf);
    std::shuffle(leaves.begin(), leaves.end(), std::mt19937(1));
    leaves.resize(static_cast<std::size_t>(count));
    return leaves;
}

} // namespace tessarin::bench
