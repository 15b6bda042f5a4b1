#include <tests/viewer/ViewerTest.h>

#include <dynamics/bullet/BulletDynamicsWorld.h>
#include <tests/doubles/RecordingComponent.h>

namespace tessarin::viewer {
namespace {

using doubles::Journal;
using testing::ElementsAre;

class FrameLoopTest : public ViewerTest {
protected:
    /// The root hears all events.
    FrameLoopTest() {
        doubles::RecordingComponent::Events all;
        for (int event = 0; event < agent::AgentEvent::COUNT; ++event)
            all.push_back(static_cast<agent::AgentEvent::_AgentEventEnum>(event));
        scene.getRoot().addComponent(new doubles::RecordingComponent(&journal, {}, all));
    }

    std::ptrdiff_t ticksOf(FrameLoop& stepped, double seconds) {
        journal.clear();
        stepped.frame(seconds);
        return std::count(journal.begin(), journal.end(), "postPhysicsTick");
    }

    Journal journal;
    Scene scene{write("a.xml", "<AgentNode name='a'/>")};
    FrameLoop loop{scene};
};

TEST_F(FrameLoopTest, SendsTheSixEventsInOrderWithTheTicksAroundEachStep) {
    scene.getWorld().setFixedStep(1.0 / 120);
    EXPECT_EQ(ticksOf(loop, 1.0 / 60), 2);
    EXPECT_THAT(journal, ElementsAre("prePhysicsUpdate", "prePhysicsTick", "postPhysicsTick", "prePhysicsTick",
                                     "postPhysicsTick", "postPhysicsUpdate", "update", "postUpdate"));
    EXPECT_EQ(ticksOf(loop, 0), 0);
    EXPECT_THAT(journal, ElementsAre("prePhysicsUpdate", "postPhysicsUpdate", "update", "postUpdate"));
}

TEST_F(FrameLoopTest, TimeThatIsLeftCountsLaterAndALongPauseIsCutShort) {
    const double step = scene.getWorld().getFixedStep();
    for (const auto& [steps, ticks] : {std::pair(0.6, 0), {0.6, 1}, {0.9, 1}, {3600 / step, 8}})
        EXPECT_EQ(ticksOf(loop, steps * step), ticks) << steps;
    EXPECT_LE(ticksOf(loop, step), 2);
    FrameLoop steady(scene);
    for (int frame = 0; frame < 10000; ++frame)
        ASSERT_EQ(ticksOf(steady, 1.0 / 60), 1) << frame;
}

TEST_F(FrameLoopTest, SpinningAgentsKeepTheirRateWhateverTheFramesAre) {
    Scene spinning(write("spin.xml", "<AgentNode name='top'><Component class='SpinBehaviour' name='spin'>"
                                     "<field name='degreesPerSecond' value='90'/><field name='axis' value='0 1 0'/>"
                                     "</Component></AgentNode>"));
    FrameLoop spin(spinning);
    for (int frame = 0; frame < 100; ++frame)
        spin.frame(0.02);
    const gmtl::Quat<double> rotation = spinning.getRoot().getRotation();
    EXPECT_NEAR(std::abs(rotation[1]), 1, 1e-3); // half a turn about Y after two seconds
    EXPECT_NEAR(rotation[3], 0, 0.02);
}

} // namespace
} // namespace tessarin::viewer
