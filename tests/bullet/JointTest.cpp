// Joints: their kinds, and what they do against what the formulas say.

#include <tests/bullet/JointScene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <tuple>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

const double infinity = std::numeric_limits<double>::infinity();
const std::string bob = "<mass>2</mass>" + ball(0.1);
const JointAxis turnY = JointAxis::rotationY;
const JointAxis slideX = JointAxis::translationX;

/// How a value swings while a world runs.
struct Swing {
    double period;  // between rises through zero, which are found between steps
    double highest; // either side, over the last fifth of the time
    int count;
};

template <class Value>
Swing swingOf(LoadedWorld& loaded, int steps, Value value) {
    std::vector<double> times;
    double before = value();
    double highest = 0;
    for (int i = 1; i <= steps; ++i) {
        loaded.run(1);
        const double now = value();
        if (before < 0 && now >= 0) {
            times.push_back((i - now / (now - before)) / 60);
        }
        before = now;
        highest = i > steps * 4 / 5 ? std::max(highest, std::abs(now)) : 0;
    }
    const auto count = static_cast<int>(times.size()) - 1;
    return {count > 0 ? (times.back() - times.front()) / count : 0, highest, count};
}

/// A ball on a rod of two metres that hangs from the world, able to turn about the file's Y axis.
ColladaScene pendulum(double degrees, const std::string& properties = "") {
    ColladaScene scene;
    const double angle = degrees * pi / 180;
    scene.add("bob",
              translate(2 * std::sin(angle), 0, -2 * std::cos(angle)) + "<rotate>0 1 0 " + std::to_string(-degrees) +
                  "</rotate>",
              bob);
    addHinge(scene, origin, attachment("bob", "<translate>0 0 2</translate>"), "0 1 0", "0 -1 0", properties);
    return scene;
}

/// A ball of two units of mass in the air, held by a spring along X.
ColladaScene springBall(double stiffness, const std::string& values, double start,
                        const std::string& gravity = "0 0 0") {
    ColladaScene scene(gravity);
    scene.add("ball", translate(start, 0, 0), bob);
    addConstraint(
        scene, "slide",
        {origin, attachment("ball"), "-INF 0 0", "INF 0 0", "0 0 0", "0 0 0",
         "<spring><linear><stiffness>" + std::to_string(stiffness) + "</stiffness>" + values + "</linear></spring>"});
    return scene;
}

} // namespace

TEST(Joint, KindsFollowWhatIsFree) {
    const std::string none = "0 0 0";
    // Both ends of the linear and of the angular limits, a revolute, prismatic or D6 joint, and what is free.
    const std::tuple<std::array<std::string, 4>, char, JointAxis, JointLimits> cases[] = {
        {{none, none, "-45 0 0", "90 0 0"}, 'r', JointAxis::rotationX, {-pi / 4, pi / 2}},
        {{none, none, "0 0 1", "0 0 -1"}, 'r', JointAxis::rotationZ, {-infinity, infinity}},
        {{none, none, "0 -180 0", "0 180 0"}, 'r', turnY, {-infinity, infinity}},
        {{none, none, "0 0 -3.4e38", "0 0 3.4e38"}, 'r', JointAxis::rotationZ, {-infinity, infinity}},
        {{"0 -INF 0", "0 2 0", none, none}, 'p', JointAxis::translationY, {-infinity, 2}},
        {{"0 0 -1.#INF", "0 0 1.#INF", none, none}, 'p', JointAxis::translationZ, {-infinity, infinity}},
        {{"0 0 INF", "0 0 INF", none, none}, 'p', JointAxis::translationZ, {-infinity, infinity}},
        {{none, none, "30 0 0", "30 0 0"}, 'd', JointAxis::rotationX, {pi / 6, pi / 6}},
        {{none, "1 0 0", "0 -10 0", "0 10 0"}, 'd', turnY, {-pi / 18, pi / 18}},
        {{none, none, "-INF -INF -INF", "INF INF INF"}, 'd', JointAxis::rotationX, {-infinity, infinity}},
    };
    for (const auto& [ends, kind, axis, expected] : cases) {
        SCOPED_TRACE(ends[0] + " | " + ends[2]);
        ColladaScene scene;
        scene.add("a", "", bob).add("b", "<translate>1 0 0</translate>", bob);
        addConstraint(
            scene, "joint",
            {refAttachment("a", "<translate>1 0 0</translate>"), attachment("b"), ends[0], ends[1], ends[2], ends[3]});
        const LoadedWorld loaded(scene);
        ASSERT_EQ(loaded.joints.size(), 1U);
        DynamicsJoint* joint = loaded.joints[0].get();
        EXPECT_EQ(joint->name, "joint");
        EXPECT_EQ(dynamic_cast<DynamicsRevoluteJoint*>(joint) != nullptr, kind == 'r');
        EXPECT_EQ(dynamic_cast<DynamicsPrismaticJoint*>(joint) != nullptr, kind == 'p');
        EXPECT_EQ(dynamic_cast<DynamicsD6Joint*>(joint) != nullptr, kind == 'd');
        EXPECT_EQ(jointOf(loaded).getMainAxis(), axis);
        const JointLimits limits = jointOf(loaded).getLimits(axis);
        EXPECT_DOUBLE_EQ(limits.lower, expected.lower);
        EXPECT_DOUBLE_EQ(limits.upper, expected.upper);
    }
}

TEST(Joint, APendulumKeepsItsPeriodAndItsSwing) {
    for (const double degrees : {0.2, 2.0, 60.0}) { // a slow swing doesn't fall asleep
        LoadedWorld loaded(pendulum(degrees));
        const BulletJoint& hinge = jointOf(loaded);
        EXPECT_NEAR(hinge.getPosition(turnY), -degrees * pi / 180, 1e-4);
        const Swing swing = swingOf(loaded, 1800, [&] { return hinge.getPosition(turnY); });
        // A ball of radius r on a rod of length l: I = m (l^2 + 2 r^2 / 5).
        const double wide = std::comp_ellint_1(std::sin(degrees * pi / 360)) * 2 / pi;
        const double period = 2 * pi * std::sqrt((4 + 0.4 * 0.01) / (10 * 2)) * wide;
        EXPECT_NEAR(swing.period, period, 0.003 * period) << degrees;
        EXPECT_NEAR(swing.highest, degrees * pi / 180, 0.05 * degrees * pi / 180);
        EXPECT_LT(gapOf(hinge), 0.002);
    }
}

TEST(Joint, ASpringSwingsAtItsFrequencyAndDampsAsItShould) {
    for (const double stiffness : {8.0, 800.0}) {
        LoadedWorld free(springBall(stiffness, "<target_value>0.5</target_value>", 1));
        const Swing swing = swingOf(free, 800, [&] { return free.at("ball", 0) - 0.5; });
        const double period = 2 * pi / std::sqrt(stiffness / 2);
        EXPECT_NEAR(swing.period, period, 0.01 * period) << stiffness;
        EXPECT_NEAR(swing.highest, 0.5, 0.02) << stiffness;
    }
    // x = exp(-c t / 2 m), with the cosine at one after each period.
    LoadedWorld damped(springBall(8, "<damping>0.8</damping>", 1));
    const int steps = static_cast<int>(std::lround(2 * pi / std::sqrt(4 - 0.04) * 60));
    damped.run(steps);
    EXPECT_NEAR(damped.at("ball", 0), std::exp(-0.2 * steps / 60), 0.01);
    // What no step can follow stays in bounds and comes to rest.
    for (const char* damping : {"<damping>0</damping>", "<damping>1e5</damping>"}) {
        LoadedWorld stiff(springBall(1e7, damping, 1));
        stiff.run(120);
        EXPECT_LT(swingOf(stiff, 20, [&] { return stiff.at("ball", 0); }).highest, 1e-3) << damping;
    }
    // Under a load it rests where its stiffness says.
    for (const double stiffness : {200.0, 10000.0}) {
        LoadedWorld loaded(springBall(stiffness, "<damping>60</damping>", 0, "10 0 0"));
        loaded.run(300);
        EXPECT_NEAR(loaded.at("ball", 0), 20 / stiffness, 0.01 * 20 / stiffness);
    }
}

TEST(Joint, LimitsHold) {
    for (const auto& [lower, upper] : {std::pair(-30.0, 20.0), {100.0, 250.0}}) {
        for (const double speed : {200.0, -200.0}) {
            SCOPED_TRACE(std::to_string(upper) + " at " + std::to_string(speed));
            ColladaScene scene("0 0 0");
            scene.add("arm", "<rotate>0 1 0 " + std::to_string((lower + upper) / 2) + "</rotate>", bob,
                      "<angular_velocity>0 " + std::to_string(speed) + " 0</angular_velocity>");
            addHinge(scene, origin, attachment("arm"), "0 " + std::to_string(lower) + " 0",
                     "0 " + std::to_string(upper) + " 0");
            LoadedWorld loaded(scene);
            std::vector<double> degrees;
            for (int i = 0; i < 300; ++i) {
                loaded.run(1);
                degrees.push_back(jointOf(loaded).getPosition(turnY) * 180 / pi);
            }
            const auto [least, most] = std::minmax_element(degrees.begin(), degrees.end());
            EXPECT_TRUE(*least > lower - 2 && *most < upper + 2) << *least << " to " << *most;
            EXPECT_NEAR(speed > 0 ? *most : *least, speed > 0 ? upper : lower, 2) << "it did get there";
        }
    }
}

TEST(Joint, MotorsSlideAndHold) {
    LoadedWorld loaded(springBall(0, "", 0));
    BulletJoint& slide = jointOf(loaded);
    const auto expectAfter = [&](int steps, double place, double tolerance) {
        loaded.run(steps);
        EXPECT_NEAR(slide.getPosition(slideX), place, tolerance);
        EXPECT_NEAR(loaded.at("ball", 0), place, tolerance);
    };
    ASSERT_TRUE(slide.setMotorVelocity(slideX, 1.5, 1000));
    expectAfter(60, 1.5, 0.02);
    // With two units of mass, a force of 2 stops a speed of 1.5 after 1.125.
    ASSERT_TRUE(slide.setMotorVelocity(slideX, 0, 2));
    expectAfter(120, 1.5 + 1.125, 0.03);
    ASSERT_TRUE(slide.setMotorPosition(slideX, -2, 3, 1000));
    expectAfter(60, 2.625 - 3, 0.2); // no faster than 3
    expectAfter(120, -2, 0.01);
    // Told the same again it goes on sleeping, told anything else it wakes.
    bool isActive = true;
    for (int i = 0; i < 120; ++i) {
        slide.setMotorPosition(slideX, -2, 3, 1000);
        loaded.run(1);
        isActive = loaded.body("ball").isActive();
    }
    EXPECT_FALSE(isActive);
    slide.setMotorPosition(slideX, -2.01, 3, 1000);
    loaded.run(1);
    EXPECT_TRUE(loaded.body("ball").isActive());
    slide.switchMotorOff(slideX);
    loaded.body("ball").setLinearVelocity({1.0F, 0.0F, 0.0F});
    expectAfter(60, -1, 0.04);
    EXPECT_FALSE(slide.setMotorVelocity(JointAxis::rotationX, 1, 1)); // locked
    EXPECT_FALSE(slide.setMotorVelocity(slideX, infinity, 1));
    EXPECT_FALSE(slide.setMotorPosition(slideX, 1, 1, -1));
}

TEST(Joint, MotorsTurnAgainstAWeight) {
    ColladaScene scene; // 3 units of mass, a metre from the hinge
    scene.add("arm", "<translate>1 0 0</translate>", "<mass>3</mass>" + box("1 0.2 0.2"));
    addHinge(scene, origin, attachment("arm", "<translate>-1 0 0</translate>"), "0 -90 0", "0 90 0");
    LoadedWorld loaded(scene);
    BulletJoint& hinge = jointOf(loaded);
    ASSERT_TRUE(hinge.setMotorVelocity(turnY, -0.5, 200));
    loaded.run(120);
    EXPECT_NEAR(hinge.getPosition(turnY), -1, 0.03);
    EXPECT_NEAR(loaded.at("arm", 2), std::sin(1.0), 0.03);
    ASSERT_TRUE(hinge.setMotorPosition(turnY, 0.5, 2, 200));
    loaded.run(180);
    EXPECT_NEAR(hinge.getPosition(turnY), 0.5, 0.01);
    ASSERT_TRUE(hinge.setMotorPosition(turnY, -0.5, 2, 20)); // too weak for 30 units of weight
    loaded.run(180);
    EXPECT_GT(hinge.getPosition(turnY), 0.5);
}

TEST(Joint, AJointThatIsNotEnabledHoldsNothing) {
    LoadedWorld loaded(pendulum(90, "<enabled>false</enabled>"));
    EXPECT_FALSE(jointOf(loaded).isEnabled());
    loaded.run(20);
    EXPECT_NEAR(loaded.at("bob", 2), -5.0 / 9, 0.03); // free fall
    jointOf(loaded).setEnabled(true);
    loaded.run(120);
    EXPECT_LT(gapOf(jointOf(loaded)), 0.01);
}

TEST(Joint, InterpenetrateLetsItsBodiesOverlap) {
    for (const bool overlaps : {true, false}) {
        ColladaScene scene("0 0 0");
        scene.add("a", "", box("1 1 1")).add("b", "<translate>1.5 0 0</translate>", box("1 1 1"));
        addConstraint(scene, "slide",
                      {refAttachment("a"), attachment("b"), "-INF 0 0", "INF 0 0", "0 0 0", "0 0 0",
                       overlaps ? "<interpenetrate>1</interpenetrate>" : ""});
        LoadedWorld loaded(scene);
        loaded.run(300);
        const double apart = jointOf(loaded).getPosition(slideX);
        EXPECT_TRUE(overlaps ? std::abs(apart - 1.5) < 0.001 : apart > 1.97) << apart;
    }
}

} // namespace tessarin::dynamics::bullet
