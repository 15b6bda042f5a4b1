#include <tests/viewer/ViewerTest.h>

#include <viewer/FrameLoop.h>
#include <viewer/Scene.h>

#include <agent/AgentNode.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>
#include <tests/doubles/RecordingComponent.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace tessarin::viewer {

namespace {

using doubles::Journal;
using testing::ElementsAre;

class FrameLoopTest : public ViewerTest {
protected:
    /// Records all that the root of a scene hears.
    void listen(Scene& scene) {
        doubles::RecordingComponent::Events all;
        for (int event = 0; event < agent::AgentEvent::COUNT; ++event)
            all.push_back(static_cast<agent::AgentEvent::_AgentEventEnum>(event));
        scene.getRoot().addComponent(new doubles::RecordingComponent(&journal, {}, all));
        journal.clear();
    }

    std::ptrdiff_t ticksOf(FrameLoop& loop, double seconds) {
        journal.clear();
        loop.frame(seconds);
        return std::count(journal.begin(), journal.end(), "postPhysicsTick");
    }

    Journal journal;
};

TEST_F(FrameLoopTest, SendsTheSixEventsInOrderWithTheTicksAroundEachStep) {
    Scene scene(write("a.xml", "<AgentNode name=\"a\"/>"));
    scene.getWorld().setFixedStep(1.0 / 120);
    listen(scene);
    FrameLoop loop(scene);
    loop.frame(1.0 / 60);
    EXPECT_THAT(journal, ElementsAre("prePhysicsUpdate", "prePhysicsTick", "postPhysicsTick", "prePhysicsTick",
                                     "postPhysicsTick", "postPhysicsUpdate", "update", "postUpdate"));
    EXPECT_EQ(ticksOf(loop, 0), 0);
    EXPECT_THAT(journal, ElementsAre("prePhysicsUpdate", "postPhysicsUpdate", "update", "postUpdate"));
}

TEST_F(FrameLoopTest, TimeThatIsLeftCountsLaterAndALongPauseIsCutShort) {
    Scene scene(write("a.xml", "<AgentNode name=\"a\"/>"));
    listen(scene);
    FrameLoop loop(scene);
    const double step = scene.getWorld().getFixedStep();
    EXPECT_EQ(ticksOf(loop, 0.6 * step), 0);
    EXPECT_EQ(ticksOf(loop, 0.6 * step), 1);
    EXPECT_EQ(ticksOf(loop, 0.9 * step), 1);
    EXPECT_EQ(ticksOf(loop, 3600), 8);
    EXPECT_LE(ticksOf(loop, step), 2);

    FrameLoop steady(scene);
    for (int frame = 0; frame < 10000; ++frame)
        ASSERT_EQ(ticksOf(steady, 1.0 / 60), 1) << frame;
}

TEST_F(FrameLoopTest, SpinningAgentsKeepTheirRateWhateverTheFramesAre) {
    Scene scene(write("spin.xml",
                      "<AgentNode name=\"top\"><Component class=\"SpinBehaviour\" name=\"spin\">"
                      "<field name=\"degreesPerSecond\" value=\"90\"/><field name=\"axis\" value=\"0 1 0\"/>"
                      "</Component></AgentNode>"));
    FrameLoop loop(scene);
    for (int frame = 0; frame < 100; ++frame)
        loop.frame(0.02);
    const gmtl::Quat<double> rotation = scene.getRoot().getRotation();
    EXPECT_NEAR(std::abs(rotation[1]), 1, 1e-3); // half a turn about Y after two seconds
    EXPECT_NEAR(rotation[3], 0, 0.02);
}

} // namespace

} // namespace tessarin::viewer
