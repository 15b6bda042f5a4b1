// Fixed steps, gravity, velocities, and that runs repeat bit for bit.

#include <tests/bullet/ColladaScene.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace tessarin::dynamics::bullet {

namespace {

using Numbers = std::array<double, 3>;

const std::string ball = "<shape><sphere><radius>0.5</radius></sphere></shape>";

ColladaScene pile() {
    ColladaScene scene;
    scene.addGround();
    for (int i = 0; i < 30; ++i) {
        const std::string x = std::to_string(0.3 * (i % 3));
        const std::string shape = i % 2 ? ball : "<shape><box><half_extents>0.5 0.4 0.3</half_extents></box></shape>";
        scene.add("b" + std::to_string(i), "<translate>" + x + " 0.1 " + std::to_string(1 + i) + "</translate>", shape,
                  "<angular_velocity>10 20 " + std::to_string(i) + "</angular_velocity>");
    }
    return scene;
}

std::vector<Pose> posesAfter(LoadedWorld& loaded, int steps) {
    loaded.run(steps);
    std::vector<Pose> poses(loaded.bodies.size());
    for (std::size_t i = 0; i < poses.size(); ++i) {
        loaded.bodies[i]->getMatrix(poses[i]);
    }
    return poses;
}

void expectBitEqual(const std::vector<Pose>& a, const std::vector<Pose>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(std::memcmp(a[i].getData(), b[i].getData(), 16 * sizeof(double)), 0) << "body " << i;
    }
}

} // namespace

TEST(Step, CountsWholeFixedSteps) {
    BulletDynamicsWorld world;
    EXPECT_EQ(world.getFixedStep(), 1.0 / 60);
    for (int i = 0; i < 100000; ++i) {
        ASSERT_EQ(world.step(world.getFixedStep()), 1) << i;
    }
    world.setFixedStep(0.01);
    EXPECT_EQ(world.step(0.035), 3);
    EXPECT_EQ(world.step(0.004), 0);
    EXPECT_EQ(world.step(0.001), 1); // 0.035 + 0.004 + 0.001 are four steps
    EXPECT_EQ(world.step(0), 0);
    EXPECT_EQ(world.step(-1), 0);
    EXPECT_EQ(world.step(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(world.step(std::numeric_limits<double>::infinity()), 0);
    EXPECT_EQ(world.step(0.01), 1);
    int steps = 0;
    for (int i = 0; i < 1000; ++i) {
        steps += world.step(0.0033);
    }
    EXPECT_EQ(steps, 330);
}

TEST(Step, AThrownBallFollowsItsParabola) {
    ColladaScene scene;
    scene.gravity = "0.5 0 -9.81";
    scene.add("ball", "<translate>0 0 100</translate>", ball, "<velocity>3 4 5</velocity>");
    LoadedWorld loaded(scene);
    for (const int seconds : {1, 2, 3}) {
        loaded.run(60);
        const double t = seconds;
        // Velocities are advanced before places, so the fall is ahead by g t dt / 2 with dt at most a fixed step.
        EXPECT_NEAR(loaded.at("ball", 0), 3 * t + 0.25 * t * t, 0.5 * t / 120);
        EXPECT_NEAR(loaded.at("ball", 1), 4 * t, 1e-3);
        EXPECT_NEAR(loaded.at("ball", 2), 100 + 5 * t - 9.81 / 2 * t * t, 9.81 * t / 120);
    }
}

TEST(Step, GravityAndVelocitiesTurnWithTheUpAxis) {
    const struct {
        const char* upAxis;
        Numbers gravity; // of (1, 2, 3)
    } cases[] = {{"<up_axis>Z_UP</up_axis>", {1, 2, 3}},
                 {"<up_axis> Y_UP </up_axis>", {1, -3, 2}},
                 {"", {1, -3, 2}},
                 {"<up_axis>X_UP</up_axis>", {3, 2, -1}}};
    for (const auto& each : cases) {
        ColladaScene scene;
        scene.upAxis = each.upAxis;
        scene.gravity = " 1\t2\r\n+3e0 ";
        scene.add("ball", "", ball, "<velocity>10 20 30</velocity>");
        scene.add("top", "<translate>50 0 0</translate>", ball, "<angular_velocity>0 0 90</angular_velocity>");
        LoadedWorld loaded(scene);
        const gmtl::Vec<double, 3> gravity = loaded.world->getGravity();
        loaded.world->setGravity({0, 0, 0});
        loaded.run(60);
        const Pose top = loaded.pose("top");
        for (unsigned i = 0; i < 3; ++i) {
            EXPECT_EQ(gravity[i], each.gravity[i]) << each.upAxis;
            EXPECT_NEAR(loaded.at("ball", i), 10 * each.gravity[i], 1e-3) << each.upAxis;
            // A quarter turn a second about Z takes the node's X axis to where its Y axis was.
            const Numbers y = std::string(each.upAxis).find('Z') != std::string::npos   ? Numbers{0, 1, 0}
                              : std::string(each.upAxis).find('X') != std::string::npos ? Numbers{0, 1, 0}
                                                                                        : Numbers{0, 0, 1};
            EXPECT_NEAR(top(i, 0), y[i], 1e-3) << each.upAxis;
        }
    }
}

TEST(Step, GravityIsThatOfTheLastFileThatNamesOne) {
    LoadedWorld loaded(ColladaScene{});
    EXPECT_EQ(loaded.world->getGravity()[2], -10);
    ColladaScene silent;
    silent.gravity = "weightless";
    loaded.load(silent, Pose());
    EXPECT_EQ(loaded.world->getGravity()[2], -10);
    silent.gravity = "0 0 -4";
    loaded.load(silent, Pose());
    EXPECT_EQ(loaded.world->getGravity()[2], -4);
}

TEST(Step, TheSameSceneRunsTheSameBitForBit) {
    std::vector<Pose> first;
    {
        LoadedWorld loaded(pile());
        first = posesAfter(loaded, 300);
    }
    LoadedWorld other(pile());
    expectBitEqual(first, posesAfter(other, 300));

    // Emptied and loaded anew, a world starts over too.
    other.bodies.clear();
    other.load(pile(), Pose());
    expectBitEqual(first, posesAfter(other, 300));
}

TEST(Step, ABodyAsksForTheMassThatItsShapesHave) {
    // A light ball hits a heavy one of the same size: the speeds afterwards tell the ratio of the masses.
    const struct {
        const char* what;
        std::string heavy; // 7 times the mass of a ball of radius 0.5 and density 1
    } cases[] = {{"mass", "<mass>" + std::to_string(7 * 0.523599) + "</mass>" + ball},
                 {"mass of a shape", "<shape><mass>3.665191</mass><sphere><radius>0.5</radius></sphere></shape>"},
                 {"density", "<shape><density>7</density><sphere><radius>0.5</radius></sphere></shape>"}};
    for (const auto& each : cases) {
        ColladaScene scene;
        scene.gravity = "0 0 0";
        scene.add("light", "<translate>-2 0 0</translate>", ball, "<velocity>4 0 0</velocity>");
        scene.add("heavy", "", each.heavy);
        LoadedWorld loaded(scene);
        loaded.run(60);
        const double before = loaded.at("heavy", 0);
        loaded.run(60);
        // Without restitution both go on together, with an eighth of the speed.
        EXPECT_NEAR(loaded.at("heavy", 0) - before, 0.5, 0.02) << each.what;
    }
}

} // namespace tessarin::dynamics::bullet
