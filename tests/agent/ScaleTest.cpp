// Everything here takes a second or a few where costs are linear, and many minutes where they are quadratic: the bound
// is far from both, and in processor time, which a busy machine doesn't change.

#include <agent/AgentNode.h>
#include <agent/Component.h>
#include <tests/doubles/RecordingComponent.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace tessarin::agent {
namespace {

constexpr int count = 200'000;

class Scale : public testing::Test {
protected:
    ~Scale() override {
        EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 60.0) << "is no longer linear";
    }

    static void fill(AgentNode& root) {
        for (int i = 0; i < count; ++i)
            root.addChild(std::string());
    }

    const std::clock_t begin = std::clock();
};

TEST_F(Scale, ManyChildrenAreBuiltSweptAndDeleted) {
    AgentNode root;
    fill(root);
    int i = 0;
    for (AgentNode* const child : root.getChildren())
        if (++i % 2 == 0)
            child->markForRemoval();
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(root.getChildren().size(), count / 2u);
    EXPECT_EQ(root.getOsgTransform()->getNumChildren(), count / 2u);
    for (AgentNode* const child : root.getChildren())
        child->markForRemoval();
    root.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(root.getOsgTransform()->getNumChildren(), 0u);
    fill(root); // for the destructor
}

TEST_F(Scale, ManyAgentsAreDeletedInAnyOrder) {
    std::vector<std::unique_ptr<AgentNode>> roots;
    for (int i = 0; i < count; ++i)
        roots.push_back(std::make_unique<AgentNode>());
    std::shuffle(roots.begin(), roots.end(), std::mt19937(1));
    for (auto& root : roots)
        root.reset();
    EXPECT_EQ(AgentNode::getAgentNode(std::string()), nullptr);
}

// From the end alone: what leaves at the front moves all of OpenSceneGraph's array of children.
TEST_F(Scale, ManyChildrenLeaveOneByOneFromTheEnd) {
    AgentNode root;
    fill(root);
    while (!root.getChildren().empty()) {
        AgentNode* const child = root.getChildren().back();
        root.removeChild(child);
        delete child;
    }
    EXPECT_EQ(root.getOsgTransform()->getNumChildren(), 0u);
}

TEST_F(Scale, ManyComponentsAndWatchersOfOneAgent) {
    std::vector<std::unique_ptr<AgentNode>> orphans;
    {
        AgentNode root;
        for (int i = 0; i < count; ++i)
            root.addComponent(new doubles::RecordingComponent);
        for (int i = 0; i < count; ++i) {
            orphans.emplace_back(root.addChild(std::string()));
            root.removeChild(orphans.back().get());
        }
        root.sendEvent(AgentEvent::UPDATE);
    }
    EXPECT_EQ(orphans.back()->getParent(), nullptr);
    EXPECT_EQ(doubles::RecordingComponent::alive, 0);
}

TEST_F(Scale, ALargeDocumentIsWrittenReadAndApplied) {
    AgentNode root;
    for (int i = 0; i < 300; ++i)
        for (int j = 0; j < 100; ++j)
            root.getOrAddChild(std::to_string(i))->addChild(std::to_string(j))->addComponent("JointComponent");
    std::stringstream document;
    root.createXml(document);
    const std::unique_ptr<AgentNode> copy(AgentNode::createFromXml(document));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->getChildren().size(), 300u);
    copy->modifyWithXml(document.str());
    EXPECT_EQ(copy->getChildren().back()->getChildren().size(), 100u);
}

} // namespace
} // namespace tessarin::agent
