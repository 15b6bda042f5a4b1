// Fixed steps, gravity, velocities, and that runs repeat bit for bit.

#include <tests/bullet/JointScene.h>
#include <tests/doubles/LogCapture.h>

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace tessarin::dynamics::bullet {

namespace {

/// Something that tumbles, hangs and is pushed by springs.
ColladaScene pile() {
    ColladaScene scene;
    scene.add("ground", "", ground);
    for (int i = 0; i < 30; ++i) {
        const std::string name = "b" + std::to_string(i);
        scene.add(name, translate(0.3 * (i % 3), 0.1, 1 + i), i % 2 ? ball() : box("0.5 0.4 0.3"),
                  "<angular_velocity>10 20 " + std::to_string(i) + "</angular_velocity>");
        if (i % 5 == 0) {
            addConstraint(scene, "j" + std::to_string(i),
                          {i ? refAttachment("b" + std::to_string(i - 1)) : "", attachment(name, translate(0, 0, -1)),
                           "0 0 0", "0 0 0", "-45 -45 -45", "45 45 45",
                           "<spring><angular><stiffness>0.01</stiffness></angular></spring>"});
        }
    }
    return scene;
}

} // namespace

TEST(Step, CountsWholeFixedSteps) {
    BulletDynamicsWorld world;
    for (int i = 0; i < 100000; ++i) {
        ASSERT_EQ(world.step(1.0 / 60), 1) << i;
    }
    world.setFixedStep(0.01);
    // 0.035 + 0.004 + 0.001 are four steps.
    const double none[] = {0, -1, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()};
    for (const double seconds : none) {
        EXPECT_EQ(world.step(seconds), 0) << seconds;
    }
    const std::pair<double, int> steps[] = {{0.035, 3}, {0.004, 0}, {0.001, 1}, {0.01, 1}, {0.29, 29}};
    for (const auto& [seconds, count] : steps) {
        EXPECT_EQ(world.step(seconds), count) << seconds;
    }
    int count = 0;
    for (int i = 0; i < 1000; ++i) {
        count += world.step(0.0033);
    }
    EXPECT_EQ(count, 330);
}

TEST(Step, TheTimeStepAndTheGravityOfAFileBecomeTheWorlds) {
    doubles::LogCapture log("dynamics");
    const double usual = 1.0 / 60;
    for (const auto& [value, expected] : {std::pair("0.025", 0.025), {"0", usual}, {"x", usual}, {"9", usual}}) {
        ColladaScene scene;
        scene.gravity += std::string("</gravity><time_step>") + value + "</time_step><gravity>0 0 -10";
        LoadedWorld loaded(scene.add("ball", "", ball()));
        EXPECT_EQ(loaded.world->getFixedStep(), expected);
        EXPECT_EQ(log.takeErrors().size(), expected == 0.025 ? 0U : 1U) << value;
        EXPECT_EQ(loaded.world->step(1), static_cast<int>(std::lround(1 / expected)));
        EXPECT_NEAR(loaded.at("ball", 2), -5, 0.1);
        // Of several files the last one that names a gravity counts.
        for (const auto& [gravity, acceleration] : {std::pair("weightless", -10), {"0 0 -4", -4}}) {
            scene.gravity = gravity;
            loaded.load(scene.text());
            EXPECT_EQ(loaded.world->getGravity()[2], acceleration);
        }
        log.take();
    }
}

TEST(Step, AThrownBallFollowsItsParabola) {
    ColladaScene scene("0.5 0 -9.81");
    LoadedWorld loaded(scene.add("ball", "<translate>0 0 100</translate>", ball(), "<velocity>3 4 5</velocity>"));
    for (const double t : {1, 2, 3}) {
        loaded.run(60);
        // Velocities are advanced before places, so the fall is ahead by g t dt / 2 with dt at most a fixed step.
        EXPECT_NEAR(loaded.at("ball", 0), 3 * t + 0.25 * t * t, 0.5 * t / 120);
        EXPECT_NEAR(loaded.at("ball", 1), 4 * t, 1e-3);
        EXPECT_NEAR(loaded.at("ball", 2), 100 + 5 * t - 9.81 / 2 * t * t, 9.81 * t / 120);
    }
}

TEST(Step, GravityAndVelocitiesTurnWithTheUpAxis) {
    using Numbers = std::array<double, 3>;
    const struct {
        const char* upAxis;
        Numbers gravity; // of (1, 2, 3)
        Numbers y;       // where the file's Y axis is, and what the X axis turns to in a quarter turn about Z
    } cases[] = {{"<up_axis>Z_UP</up_axis>", {1, 2, 3}, {0, 1, 0}},
                 {"<up_axis> Y_UP </up_axis>", {1, -3, 2}, {0, 0, 1}},
                 {"", {1, -3, 2}, {0, 0, 1}},
                 {"<up_axis>X_UP</up_axis>", {3, 2, -1}, {0, 1, 0}}};
    for (const auto& each : cases) {
        ColladaScene scene;
        scene.upAxis = each.upAxis;
        scene.gravity = " 1\t2,\r\n+3e0 ";
        scene.add("ball", "", ball(), "<velocity>10 20 30</velocity>");
        scene.add("top", "<translate>50 0 0</translate>", ball(), "<angular_velocity>0 0 90</angular_velocity>");
        LoadedWorld loaded(scene);
        const gmtl::Vec<double, 3> gravity = loaded.world->getGravity();
        loaded.world->setGravity({0, 0, 0});
        loaded.run(60);
        for (unsigned i = 0; i < 3; ++i) {
            EXPECT_EQ(gravity[i], each.gravity[i]) << each.upAxis;
            EXPECT_NEAR(loaded.at("ball", i), 10 * each.gravity[i], 1e-3) << each.upAxis;
            EXPECT_NEAR(loaded.pose("top")(i, 0), each.y[i], 1e-3) << each.upAxis;
        }
    }
}

TEST(Step, TheSameSceneRunsTheSameBitForBit) {
    LoadedWorld one(pile());
    const std::vector<double> first = one.run(300).numbers();
    for (std::size_t i = 0; i < one.joints.size(); ++i) {
        EXPECT_LT(gapOf(jointOf(one, i)), 0.05);
    }
    LoadedWorld other(pile());
    EXPECT_EQ(first, other.run(300).numbers());
    // Emptied and loaded anew, a world starts over too.
    other.bodies.clear();
    other.joints.clear();
    other.load(pile().text());
    EXPECT_EQ(first, other.run(300).numbers());
}

} // namespace tessarin::dynamics::bullet
