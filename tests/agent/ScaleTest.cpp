// Everything here takes a second or a few where costs are linear, and many minutes where they are quadratic: the bound
// is far from both, and in processor time, which a busy machine doesn't change.

#include <tests/agent/AgentTest.h>

#include <ctime>

namespace tessarin::agent {
namespace {

constexpr int count = 200'000;

struct Scale : testing::Test {
    ~Scale() override {
        EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 60.0) << "is no longer linear";
    }

    void fill() {
        for (int i = 0; i < count; ++i)
            root->addChild(std::string());
    }

    const std::clock_t begin = std::clock();
    Owned root = std::make_unique<AgentNode>();
};

TEST_F(Scale, ManyChildrenAreSweptDeletedAndTakenOut) {
    fill();
    for (const int part : {2, 1}) { // every second, then all
        int i = 0;
        for (AgentNode* const child : root->getChildren())
            if (++i % part == 0)
                child->markForRemoval();
        root->sendEvent(AgentEvent::UPDATE);
    }
    fill();
    std::vector<Owned> orphans;
    while (!root->getChildren().empty()) {
        orphans.emplace_back(root->getChildren().back());
        root->removeChild(orphans.back().get());
    }
    std::shuffle(orphans.begin(), orphans.end(), std::mt19937(1));
    orphans.resize(1);
    fill();
    for (int i = 0; i < count; ++i)
        root->addComponent(new RecordingComponent);
    root->sendEvent(AgentEvent::UPDATE);
    root.reset();
    EXPECT_EQ(orphans.back()->getParent(), nullptr);
}

TEST_F(Scale, ALargeDocumentIsWrittenReadAndApplied) {
    for (int i = 0; i < 300; ++i)
        for (int j = 0; j < 100; ++j)
            root->getOrAddChild(std::to_string(i))->addChild(std::to_string(j))->addComponent("JointComponent");
    std::stringstream document;
    root->createXml(document);
    const Owned copy(AgentNode::createFromXml(document));
    ASSERT_NE(copy, nullptr);
    copy->modifyWithXml(document.str());
    EXPECT_EQ(copy->getChildren().back()->getChildren().size(), 100u);
}

} // namespace
} // namespace tessarin::agent
