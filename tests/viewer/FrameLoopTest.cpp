#include <tests/viewer/ColladaText.h>
#include <tests/viewer/ViewerTest.h>

#include <dynamics/DynamicsBody.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>
#include <tests/doubles/RecordingComponent.h>

#include <gmtl/MatrixOps.h>

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

TEST_F(FrameLoopTest, PicturesShowEvenMotionAndEverybodyElseTheTruePoses) {
    const double speed = 3, turn = 2; // a metre and a radian are what a second brings
    for (const std::vector<double>& frames : {std::vector<double>{1 / 60.0}, {1 / 144.0}, {0.016, 0.0172, 0.0031}}) {
        for (const double step : {0.03, 1 / 60.0}) {
            SCOPED_TRACE(std::to_string(frames[0]) + " and " + std::to_string(step));
            Scene moving(write("moving.dae",
                               colladaText("Z_UP", "<node id='cube'/><node id='fixed'/>",
                                           "<rigid_body sid='c'><technique_common><mass>1</mass><shape><translate>0 0 5"
                                           "</translate><sphere><radius>1</radius></sphere></shape></technique_common>"
                                           "</rigid_body>",
                                           instanceText("c", "cube"))));
            moving.getWorld().setFixedStep(step);
            AgentNode& cube = *moving.getRoot().getChild("cube");
            dynamics::DynamicsBody& body = *cube.getRigidBody()->getBody();
            body.setLinearVelocity({static_cast<float>(speed), 0.0F, 0.0F});
            body.setAngularVelocity({0.0F, 0.0F, static_cast<float>(turn)});
            FrameLoop drawn(moving);
            const bool isWhole = frames.size() == 1 && frames[0] == step;
            for (std::size_t i = 0; i < 200; ++i) {
                drawn.frame(frames[i % frames.size()]);
                if (drawn.getTime() > 2 * step) {
                    const FrameLoop::Picture picture(drawn);
                    const double shown = drawn.getTime() - (isWhole ? 0 : step);
                    const gmtl::Matrix<double, 4, 4> matrix = cube.getMatrix();
                    EXPECT_NEAR(matrix(0, 3), speed * shown, 1e-4);
                    EXPECT_NEAR(std::remainder(std::atan2(matrix(1, 0), matrix(0, 0)) - turn * shown, 2 * osg::PI), 0,
                                1e-3);
                }
                gmtl::Matrix<double, 4, 4> pose;
                body.getMatrix(pose);
                EXPECT_TRUE(cube.getMatrix() == pose);
            }
            for (const double frame : {step, 0.3 * step}) {
                body.setPosition({-50, 0, 0}); // not a place on a way
                drawn.frame(frame);
                const FrameLoop::Picture picture(drawn);
                EXPECT_LT(cube.getPosition()[0], -49);
            }
        }
    }
}

} // namespace
} // namespace tessarin::viewer
