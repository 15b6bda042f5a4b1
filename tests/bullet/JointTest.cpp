// Joints: their kinds, and what they do against what the formulas say.

#include <tests/bullet/JointScene.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

constexpr double pi = 3.14159265358979323846;
const double infinity = std::numeric_limits<double>::infinity();
const std::string ball = "<mass>2</mass><shape><sphere><radius>0.1</radius></sphere></shape>";

/// When a value crosses zero from below, in seconds and between steps, over so many steps.
template <class Value>
std::vector<double> risesOf(LoadedWorld& loaded, int steps, Value value) {
    std::vector<double> times;
    double before = value();
    for (int i = 1; i <= steps; ++i) {
        loaded.run(1);
        const double now = value();
        if (before < 0 && now >= 0) {
            times.push_back((i - now / (now - before)) / 60);
        }
        before = now;
    }
    return times;
}

double meanPeriod(const std::vector<double>& times) {
    return times.size() < 2 ? 0 : (times.back() - times.front()) / static_cast<double>(times.size() - 1);
}

/// A ball on a rod of two metres that hangs from the world, able to turn about the file's Y axis.
ColladaScene pendulum(double degrees) {
    ColladaScene scene;
    const double angle = degrees * pi / 180;
    scene.add("bob",
              "<translate>" + std::to_string(2 * std::sin(angle)) + " 0 " + std::to_string(-2 * std::cos(angle)) +
                  "</translate><rotate>0 1 0 " + std::to_string(-degrees) + "</rotate>",
              ball);
    Constraint hinge;
    hinge.first = "<ref_attachment><translate>0 0 0</translate></ref_attachment>";
    hinge.second = attachment("bob", "<translate>0 0 2</translate>");
    hinge.angularMin = "0 1 0";
    hinge.angularMax = "0 -1 0";
    addConstraint(scene, "hinge", hinge);
    return scene;
}

/// A ball in the air, held by a spring along X.
ColladaScene springBall(const std::string& values, double start) {
    ColladaScene scene;
    scene.gravity = "0 0 0";
    scene.add("ball", "<translate>" + std::to_string(start) + " 0 0</translate>", ball);
    Constraint slide;
    slide.first = "<ref_attachment><translate>0 0 0</translate></ref_attachment>";
    slide.second = attachment("ball");
    slide.linearMin = "-INF 0 0";
    slide.linearMax = "INF 0 0";
    slide.spring = "<spring><linear>" + values + "</linear></spring>";
    addConstraint(scene, "slide", slide);
    return scene;
}

} // namespace

TEST(Joint, KindsFollowWhatIsFree) {
    struct Case {
        const char* linear[2];
        const char* angular[2];
        char kind; // revolute, prismatic or D6
        JointAxis axis;
        JointLimits limits;
    };
    const Case cases[] = {
        {{"0 0 0", "0 0 0"}, {"-45 0 0", "90 0 0"}, 'r', JointAxis::rotationX, {-pi / 4, pi / 2}},
        {{"0 0 0", "0 0 0"}, {"0 0 1", "0 0 -1"}, 'r', JointAxis::rotationZ, {-infinity, infinity}},
        {{"0 0 0", "0 0 0"}, {"0 -180 0", "0 180 0"}, 'r', JointAxis::rotationY, {-infinity, infinity}},
        {{"0 -INF 0", "0 2 0"}, {"0 0 0", "0 0 0"}, 'p', JointAxis::translationY, {-infinity, 2}},
        {{"0 0 -1.#INF", "0 0 1.#INF"}, {"0 0 0", "0 0 0"}, 'p', JointAxis::translationZ, {-infinity, infinity}},
        {{"0 0 0", "0 0 0"}, {"30 0 0", "30 0 0"}, 'd', JointAxis::rotationX, {pi / 6, pi / 6}},
        {{"0 0 0", "1 0 0"}, {"0 -10 0", "0 10 0"}, 'd', JointAxis::rotationY, {-pi / 18, pi / 18}},
        {{"0 0 0", "0 0 0"}, {"-INF -INF -INF", "INF INF INF"}, 'd', JointAxis::rotationX, {-infinity, infinity}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.linear[0]) + " | " + each.angular[0]);
        ColladaScene scene;
        scene.add("a", "", ball).add("b", "<translate>1 0 0</translate>", ball);
        Constraint constraint;
        constraint.first = refAttachment("a", "<translate>1 0 0</translate>");
        constraint.second = attachment("b");
        constraint.linearMin = each.linear[0];
        constraint.linearMax = each.linear[1];
        constraint.angularMin = each.angular[0];
        constraint.angularMax = each.angular[1];
        addConstraint(scene, "joint", constraint);
        const LoadedWorld loaded(scene);
        ASSERT_EQ(loaded.joints.size(), 1U);
        DynamicsJoint* joint = loaded.joints[0].get();
        EXPECT_EQ(dynamic_cast<DynamicsRevoluteJoint*>(joint) != nullptr, each.kind == 'r');
        EXPECT_EQ(dynamic_cast<DynamicsPrismaticJoint*>(joint) != nullptr, each.kind == 'p');
        EXPECT_EQ(dynamic_cast<DynamicsD6Joint*>(joint) != nullptr, each.kind == 'd');
        const BulletJoint& bullet = jointOf(loaded, "joint");
        EXPECT_EQ(bullet.getMainAxis(), each.axis);
        const JointLimits limits = bullet.getLimits(each.axis);
        if (std::isfinite(each.limits.lower)) {
            EXPECT_NEAR(limits.lower, each.limits.lower, 1e-9);
        } else {
            EXPECT_EQ(limits.lower, each.limits.lower);
        }
        EXPECT_NEAR(limits.upper == each.limits.upper ? 0 : limits.upper - each.limits.upper, 0, 1e-9);
        EXPECT_EQ(bullet.getFirstBody(), &loaded.body("a"));
        EXPECT_EQ(bullet.getSecondBody(), &loaded.body("b"));
    }
}

TEST(Joint, APendulumKeepsItsPeriodAndItsSwing) {
    // A ball of radius r on a rod of length l: I = m (l^2 + 2 r^2 / 5).
    const double inertia = 4 + 0.4 * 0.01;
    for (const double degrees : {2.0, 60.0}) {
        LoadedWorld loaded(pendulum(degrees));
        const BulletJoint& hinge = jointOf(loaded, "hinge");
        EXPECT_NEAR(hinge.getPosition(JointAxis::rotationY), -degrees * pi / 180, 1e-4);
        const std::vector<double> times =
            risesOf(loaded, 1800, [&] { return hinge.getPosition(JointAxis::rotationY); });
        const double wide = std::comp_ellint_1(std::sin(degrees * pi / 360)) * 2 / pi;
        const double period = 2 * pi * std::sqrt(inertia / (10 * 2)) * wide;
        EXPECT_NEAR(meanPeriod(times), period, 0.003 * period) << degrees;
        double widest = 0;
        for (int i = 0; i < 200; ++i) {
            loaded.run(1);
            widest = std::max(widest, std::abs(hinge.getPosition(JointAxis::rotationY)));
        }
        EXPECT_NEAR(widest, degrees * pi / 180, 0.03 * degrees * pi / 180);
        EXPECT_LT(gapOf(hinge), 0.002);
    }
}

TEST(Joint, ASlowSwingDoesNotFallAsleep) {
    LoadedWorld loaded(pendulum(0.5));
    const BulletJoint& hinge = jointOf(loaded, "hinge");
    loaded.run(1200);
    EXPECT_GE(risesOf(loaded, 600, [&] { return hinge.getPosition(JointAxis::rotationY); }).size(), 3U);
}

TEST(Joint, ASpringSwingsAtItsFrequencyAndDampsAsItShould) {
    for (const double stiffness : {8.0, 800.0}) {
        LoadedWorld free(
            springBall("<stiffness>" + std::to_string(stiffness) + "</stiffness><target_value>0.5</target_value>", 1));
        const double period = 2 * pi / std::sqrt(stiffness / 2);
        const auto offset = [&] { return free.at("ball", 0) - 0.5; };
        EXPECT_NEAR(meanPeriod(risesOf(free, 600, offset)), period, 0.01 * period) << stiffness;
        double widest = 0;
        for (int i = 0; i < 200; ++i) {
            free.run(1);
            widest = std::max(widest, std::abs(offset()));
        }
        EXPECT_NEAR(widest, 0.5, 0.02) << stiffness;
    }
    // x = exp(-c t / 2 m), with the cosine at one after each period.
    LoadedWorld damped(springBall("<stiffness>8</stiffness><damping>0.8</damping>", 1));
    const double omega = std::sqrt(4 - 0.04);
    const int steps = static_cast<int>(std::lround(2 * pi / omega * 60));
    damped.run(steps);
    EXPECT_NEAR(damped.at("ball", 0), std::exp(-0.2 * steps / 60), 0.01);
    // What no step can follow stays in bounds and comes to rest.
    for (const char* damping : {"0", "1e5"}) {
        LoadedWorld stiff(springBall(std::string("<stiffness>1e7</stiffness><damping>") + damping + "</damping>", 1));
        stiff.run(120);
        for (int i = 0; i < 10; ++i) {
            stiff.run(1);
            EXPECT_NEAR(stiff.at("ball", 0), 0, 1e-3) << damping;
        }
    }
}

TEST(Joint, ASpringUnderALoadRestsWhereItsStiffnessSays) {
    for (const double stiffness : {200.0, 10000.0}) {
        ColladaScene scene =
            springBall("<stiffness>" + std::to_string(stiffness) + "</stiffness><damping>60</damping>", 0);
        scene.gravity = "10 0 0";
        LoadedWorld loaded(scene);
        loaded.run(300);
        EXPECT_NEAR(loaded.at("ball", 0), 20 / stiffness, 0.01 * 20 / stiffness) << "two units of mass";
    }
}

TEST(Joint, AnAngularSpringCountsDegrees) {
    ColladaScene scene;
    scene.gravity = "0 0 0";
    scene.add("wheel", "<rotate>0 0 1 40</rotate>", "<mass>2</mass><inertia>1 1 3</inertia>" + ball.substr(14));
    Constraint hinge;
    hinge.first = "<ref_attachment><translate>0 0 0</translate></ref_attachment>";
    hinge.second = attachment("wheel");
    hinge.angularMin = "0 0 1";
    hinge.angularMax = "0 0 -1";
    hinge.spring = "<spring><angular><stiffness>0.5</stiffness><target_value>20</target_value></angular></spring>";
    addConstraint(scene, "hinge", hinge);
    LoadedWorld loaded(scene);
    const BulletJoint& joint = jointOf(loaded, "hinge");
    EXPECT_NEAR(joint.getPosition(JointAxis::rotationZ), 40 * pi / 180, 1e-4);
    const auto off = [&] { return joint.getPosition(JointAxis::rotationZ) - 20 * pi / 180; };
    const double period = 2 * pi / std::sqrt(0.5 * 180 / pi / 3);
    EXPECT_NEAR(meanPeriod(risesOf(loaded, 900, off)), period, 0.01 * period);
}

TEST(Joint, LimitsHold) {
    for (const std::string range : {"-30 20", "100 250"}) {
        SCOPED_TRACE(range);
        const double lower = std::stod(range);
        const double upper = std::stod(range.substr(range.find(' ')));
        const double start = (lower + upper) / 2;
        for (const double speed : {200.0, -200.0}) {
            ColladaScene scene;
            scene.gravity = "0 0 0";
            scene.add("arm", "<rotate>0 1 0 " + std::to_string(start) + "</rotate>", ball,
                      "<angular_velocity>0 " + std::to_string(speed) + " 0</angular_velocity>");
            Constraint hinge;
            hinge.first = "<ref_attachment><translate>0 0 0</translate></ref_attachment>";
            hinge.second = attachment("arm");
            hinge.angularMin = "0 " + std::to_string(lower) + " 0";
            hinge.angularMax = "0 " + std::to_string(upper) + " 0";
            addConstraint(scene, "hinge", hinge);
            LoadedWorld loaded(scene);
            const BulletJoint& joint = jointOf(loaded, "hinge");
            double least = 1e9;
            double most = -1e9;
            for (int i = 0; i < 300; ++i) {
                loaded.run(1);
                least = std::min(least, joint.getPosition(JointAxis::rotationY) * 180 / pi);
                most = std::max(most, joint.getPosition(JointAxis::rotationY) * 180 / pi);
            }
            EXPECT_GT(least, lower - 2);
            EXPECT_LT(most, upper + 2);
            // It did get there.
            EXPECT_NEAR(speed > 0 ? most : least, speed > 0 ? upper : lower, 2);
        }
    }
}

TEST(Joint, MotorsDriveAndHold) {
    LoadedWorld loaded(springBall("<stiffness>0</stiffness>", 0));
    BulletJoint& slide = jointOf(loaded, "slide");
    const JointAxis x = JointAxis::translationX;
    ASSERT_TRUE(slide.setMotorVelocity(x, 1.5, 1000));
    loaded.run(60);
    EXPECT_NEAR(slide.getPosition(x), 1.5, 0.02);
    EXPECT_NEAR(loaded.at("ball", 0), 1.5, 0.02);
    // With two units of mass, a force of 2 stops a speed of 1.5 after 1.125.
    ASSERT_TRUE(slide.setMotorVelocity(x, 0, 2));
    loaded.run(120);
    EXPECT_NEAR(slide.getPosition(x), 1.5 + 1.125, 0.03);
    ASSERT_TRUE(slide.setMotorPosition(x, -2, 3, 1000));
    loaded.run(60);
    EXPECT_GT(slide.getPosition(x), -0.5); // no faster than 3
    loaded.run(120);
    EXPECT_NEAR(slide.getPosition(x), -2, 0.01);
    // Told the same again it goes on sleeping, told anything else it wakes.
    const auto sleeps = [&] {
        bool isActive = false;
        for (int i = 0; i < 120; ++i) {
            slide.setMotorPosition(x, -2, 3, 1000);
            loaded.run(1);
            isActive = loaded.body("ball").isActive();
        }
        return !isActive;
    };
    EXPECT_TRUE(sleeps());
    slide.setMotorPosition(x, -2.01, 3, 1000);
    loaded.run(1);
    EXPECT_TRUE(loaded.body("ball").isActive());
    slide.switchMotorOff(x);
    loaded.body("ball").setLinearVelocity({1.0F, 0.0F, 0.0F});
    loaded.run(60);
    EXPECT_NEAR(slide.getPosition(x), -1, 0.04);
    EXPECT_FALSE(slide.setMotorVelocity(JointAxis::rotationX, 1, 1)); // locked
    EXPECT_FALSE(slide.setMotorVelocity(x, infinity, 1));
    EXPECT_FALSE(slide.setMotorPosition(x, 1, 1, -1));

    // An arm against its weight: 3 units of mass, a metre from the hinge.
    ColladaScene scene;
    scene.add("arm", "<translate>1 0 0</translate>",
              "<mass>3</mass><shape><box><half_extents>1 0.2 0.2</half_extents></box></shape>");
    Constraint turn;
    turn.first = "<ref_attachment><translate>0 0 0</translate></ref_attachment>";
    turn.second = attachment("arm", "<translate>-1 0 0</translate>");
    turn.angularMin = "0 -90 0";
    turn.angularMax = "0 90 0";
    addConstraint(scene, "turn", turn);
    LoadedWorld crane(scene);
    BulletJoint& hinge = jointOf(crane, "turn");
    ASSERT_TRUE(hinge.setMotorVelocity(JointAxis::rotationY, -0.5, 200));
    crane.run(120);
    EXPECT_NEAR(hinge.getPosition(JointAxis::rotationY), -1, 0.03);
    EXPECT_NEAR(crane.at("arm", 2), std::sin(1.0), 0.03);
    ASSERT_TRUE(hinge.setMotorPosition(JointAxis::rotationY, 0.5, 2, 200));
    crane.run(180);
    EXPECT_NEAR(hinge.getPosition(JointAxis::rotationY), 0.5, 0.01);
    ASSERT_TRUE(hinge.setMotorPosition(JointAxis::rotationY, -0.5, 2, 20)); // too weak for 30 units of weight
    crane.run(180);
    EXPECT_GT(hinge.getPosition(JointAxis::rotationY), 0.5);
}

TEST(Joint, AJointThatIsNotEnabledHoldsNothing) {
    ColladaScene scene = pendulum(90);
    const std::string technique = "<technique_common><limits>";
    scene.bodies.replace(scene.bodies.find(technique), technique.size(),
                         "<technique_common><enabled>false</enabled><limits>");
    LoadedWorld loaded(scene);
    BulletJoint& hinge = jointOf(loaded, "hinge");
    EXPECT_FALSE(hinge.isEnabled());
    loaded.run(60);
    EXPECT_NEAR(loaded.at("bob", 2), -5, 0.1); // free fall
    hinge.setEnabled(true);
    loaded.run(120);
    EXPECT_LT(gapOf(hinge), 0.05);
}

TEST(Joint, InterpenetrateLetsItsBodiesOverlap) {
    for (const bool interpenetrate : {true, false}) {
        ColladaScene scene;
        scene.gravity = "0 0 0";
        const std::string box = "<mass>1</mass><shape><box><half_extents>1 1 1</half_extents></box></shape>";
        scene.add("a", "", box).add("b", "<translate>1.5 0 0</translate>", box);
        Constraint slide;
        slide.first = refAttachment("a");
        slide.second = attachment("b");
        slide.linearMin = "-INF 0 0";
        slide.linearMax = "INF 0 0";
        slide.properties = interpenetrate ? "<interpenetrate>1</interpenetrate>" : "";
        addConstraint(scene, "slide", slide);
        LoadedWorld loaded(scene);
        loaded.run(300);
        const double apart = jointOf(loaded, "slide").getPosition(JointAxis::translationX);
        EXPECT_TRUE(interpenetrate ? std::abs(apart - 1.5) < 0.001 : apart > 1.97) << apart;
    }
}

TEST(Joint, AnyOrderOfDeletionIsSafe) {
    for (int order = 0; order < 6; ++order) {
        ColladaScene scene = pendulum(30);
        scene.add("second", "<translate>5 0 0</translate>", ball);
        Constraint weld;
        weld.first = refAttachment("bob");
        weld.second = attachment("second");
        addConstraint(scene, "weld", weld);
        LoadedWorld loaded(scene);
        ASSERT_EQ(loaded.joints.size(), 2U);
        loaded.run(5);
        BulletJoint& hinge = jointOf(loaded, "hinge");
        BulletJoint& held = jointOf(loaded, "weld");
        const auto expectInert = [](BulletJoint& joint) {
            EXPECT_FALSE(joint.isConnected());
            EXPECT_EQ(joint.getFirstBody(), nullptr);
            EXPECT_EQ(joint.getSecondBody(), nullptr);
            EXPECT_EQ(joint.getPosition(JointAxis::rotationY), 0);
            EXPECT_EQ(joint.getFirstFrame()(0, 3), 0);
            EXPECT_FALSE(joint.setMotorVelocity(JointAxis::rotationY, 1, 1));
            joint.switchMotorOff(JointAxis::rotationY);
            joint.setEnabled(false);
        };
        if (order % 2) {
            loaded.world.reset();
        }
        if (order / 2 == 0) { // all bodies first
            loaded.bodies.clear();
            expectInert(hinge);
            expectInert(held);
        } else if (order / 2 == 1) { // one of them
            loaded.bodies.erase(loaded.bodies.begin());
            expectInert(hinge);
            expectInert(held);
        } else {
            EXPECT_TRUE(held.isConnected());
            loaded.joints.clear();
        }
        if (loaded.world) {
            loaded.run(5);
        }
    }
}

TEST(Joint, RunsRepeatBitForBit) {
    std::vector<std::vector<Pose>> runs(2);
    for (std::vector<Pose>& poses : runs) {
        ColladaScene scene;
        scene.addGround();
        for (int i = 0; i < 12; ++i) {
            const std::string name = "link" + std::to_string(i);
            scene.add(name, "<translate>" + std::to_string(0.3 * i) + " 0 2</translate>", ball);
            Constraint link;
            link.first = i ? refAttachment("link" + std::to_string(i - 1), "<translate>0.15 0 0</translate>") : "";
            link.second = attachment(name, "<translate>-0.15 0 0</translate>");
            link.angularMin = "-45 -45 -45";
            link.angularMax = "45 45 45";
            link.spring = "<spring><angular><stiffness>0.01</stiffness></angular></spring>";
            addConstraint(scene, "joint" + std::to_string(i), link);
        }
        LoadedWorld loaded(scene);
        loaded.run(300);
        double widest = 0;
        for (const auto& joint : loaded.joints) {
            widest = std::max(widest, gapOf(dynamic_cast<BulletJoint&>(*joint)));
        }
        EXPECT_LT(widest, 0.01);
        for (const auto& body : loaded.bodies) {
            poses.emplace_back();
            body->getMatrix(poses.back());
        }
    }
    ASSERT_EQ(runs[0].size(), 13U);
    for (std::size_t i = 0; i < runs[0].size(); ++i) {
        for (int element = 0; element < 16; ++element) {
            EXPECT_EQ(runs[0][i].getData()[element], runs[1][i].getData()[element]) << i;
        }
    }
}

} // namespace tessarin::dynamics::bullet
