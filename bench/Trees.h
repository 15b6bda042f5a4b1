#pragma once

#include <agent/AgentNode.h>

#include <osg/MatrixTransform>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// @file
/// The trees that the rows work on: a fan-out of ten, and a name of its own for each node.

namespace tessarin::bench {

constexpr std::int64_t treeSize = 100000;
constexpr std::int64_t fanOut = 10;

inline std::string nameOfNode(std::int64_t index) {
    return "agent " + std::to_string(index);
}

/// The agents of a tree, parents before their children. Deleting the first deletes all.
std::vector<agent::AgentNode*> makeAgents(std::int64_t size);

/// The OpenSceneGraph objects of such a tree alone: transforms with names and user data, one under another. The first
/// holds all.
std::vector<osg::MatrixTransform*> makeTransforms(std::int64_t size, osg::ref_ptr<osg::MatrixTransform>& root);

/// The indices of so many leaves of a tree, in an order that is random but the same in every run.
std::vector<std::int64_t> pickLeaves(std::int64_t size, std::int64_t count);

} // namespace tessarin::bench
