#include <tests/viewer/ViewerTest.h>

#include <viewer/Digest.h>

#include <limits>

namespace tessarin::viewer {
namespace {

using DigestTest = ViewerTest;

std::uint64_t digestAfter(Scene& scene, int frames) {
    runFrames(scene, frames);
    return digestOf(scene.getRoot());
}

TEST_F(DigestTest, TheSameSceneRunsTheSameWayEachTime) {
    for (const char* name : {"tower.xml", "truck.xml", "crane.xml", "chain.xml"}) {
        Scene first(scenes / name);
        const std::uint64_t start = digestOf(first.getRoot());
        const std::uint64_t end = digestAfter(first, 300);
        EXPECT_NE(start, end);
        first.reload();
        EXPECT_EQ(digestOf(first.getRoot()), start) << name;
        EXPECT_EQ(digestAfter(first, 300), end) << name << " after a reload";
        Scene second(scenes / name);
        EXPECT_EQ(digestAfter(second, 300), end) << name << " from the start";
    }
}

TEST_F(DigestTest, EveryNamePoseAndPlaceInTheTreeCounts) {
    const std::string text = "<AgentNode name='a'><AgentNode name='b'/><AgentNode name='c'><AgentNode name='d'/>"
                             "</AgentNode></AgentNode>";
    Scene scene(write("a.xml", text));
    AgentNode& root = scene.getRoot();
    const std::uint64_t before = digestOf(root);
    EXPECT_EQ(digestOf(Scene(write("same.xml", text)).getRoot()), before);

    AgentNode& deepest = *root.getChild("c")->getChild("d");
    deepest.setPosition({0, std::numeric_limits<double>::denorm_min(), 0});
    EXPECT_NE(digestOf(root), before);
    deepest.setPosition({0, 0, 0});
    EXPECT_EQ(digestOf(root), before);
    deepest.setName("e");
    EXPECT_NE(digestOf(root), before);
    deepest.setName("d");
    root.getChild("c")->removeChild(&deepest);
    root.addChild(&deepest);
    EXPECT_NE(digestOf(root), before);
}

TEST_F(DigestTest, TheProgramPrintsItAsTheLastLine) {
    const std::string tower = (scenes / "tower.xml").string();
    std::string lines[2];
    for (std::string& line : lines) {
        ASSERT_EQ(run({"--frames", "30", "--digest", tower}), 0);
        line = out.str().substr(out.str().find('\n') + 1);
        EXPECT_THAT(line, testing::MatchesRegex("[0-9a-f]{16}\n"));
    }
    EXPECT_EQ(lines[0], lines[1]);
    ASSERT_EQ(run({"--digest", "--frames", "31", tower}), 0);
    EXPECT_THAT(out.str(), testing::Not(testing::EndsWith(lines[0])));
}

} // namespace
} // namespace tessarin::viewer
