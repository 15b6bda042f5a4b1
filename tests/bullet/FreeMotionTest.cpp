// Bodies in space, where nothing but their joints acts on them: what mechanics keeps is kept.

#include <tests/bullet/Solid.h>

#include <gtest/gtest.h>
#include <osg/Quat>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

using osg::Vec3d;

/// How far the second side of a joint is off the first one along the axes that are locked.
double offAxes(const BulletJoint& joint) {
    const Pose first = joint.getFirstFrame();
    const Pose second = joint.getSecondFrame();
    double most = 0;
    for (unsigned axis = 0; axis < 3; ++axis) {
        const JointLimits limits = joint.getLimits(static_cast<JointAxis>(axis));
        double off = 0;
        for (unsigned row = 0; row < 3; ++row) {
            off += first(row, axis) * (second(row, 3) - first(row, 3));
        }
        most = limits.lower == limits.upper ? std::max(most, std::abs(off)) : most;
    }
    return most;
}

/// How a body turns that nothing acts on: Euler's equations, by the method of Runge and Kutta in small steps.
class EulersTop {
public:
    EulersTop(const Vec3d& momentsOfIt, const Vec3d& velocityInBody) : moments(momentsOfIt), velocity(velocityInBody) {}

    void run(double seconds) {
        const int count = static_cast<int>(std::ceil(seconds * velocity.length() / 0.01));
        const double step = seconds / count;
        for (int i = 0; i < count; ++i) {
            const auto [a, p] = rate(velocity, turned);
            const auto [b, q] = rate(velocity + a * (step / 2), turned + p * (step / 2));
            const auto [c, r] = rate(velocity + b * (step / 2), turned + q * (step / 2));
            const auto [d, s] = rate(velocity + c * step, turned + r * step);
            velocity += (a + b * 2 + c * 2 + d) * (step / 6);
            turned = turned + (p + q * 2 + r * 2 + s) * (step / 6);
            turned /= turned.length();
        }
    }

    Vec3d moments;
    Vec3d velocity; // about the body's axes
    osg::Quat turned;

private:
    std::pair<Vec3d, osg::Quat> rate(const Vec3d& w, const osg::Quat& at) const {
        const Vec3d change((moments[1] - moments[2]) / moments[0] * w[1] * w[2],
                           (moments[2] - moments[0]) / moments[1] * w[2] * w[0],
                           (moments[0] - moments[1]) / moments[2] * w[0] * w[1]);
        // OpenSceneGraph multiplies the other way round: first the body's own turn, then the one so far.
        return {change, osg::Quat(w[0] / 2, w[1] / 2, w[2] / 2, 0) * at};
    }
};

} // namespace

TEST(FreeMotion, ATumblingBodyTurnsAsEulersEquationsSay) {
    const Vec3d handle(1, 2, 3);
    const struct {
        Vec3d moments;
        Vec3d velocity;
        int seconds = 20;
        Vec3d axis = {1, 0, 0}; // of the turn of the mass frame
        double degrees = 0;
        Vec3d centre = {};
    } cases[] = {
        {handle, {0.1, 20, 0.05}}, // it turns over again and again
        {handle, {0.5, 20, 0.1}, 20, {1, 2, 3}, 70, {0.3, 0.2, -0.1}},
        {handle * 1e-5, {0.5, 20, 0.1}, 20, {1, -2, 3}, 170, {0, 0, 5}},
        {handle * 1e5, {0.5, -20, 0.1}},
        {handle, {1, 90, 1}, 10, {0, 1, 1}, 20},
        {handle, {1, 300, 3}, 4}, // several radians in a step
        {{0.9, 0.91, 1}, {20, 10, -20}},
        {{1, 1, 0.001}, {1, 2, 100}, 10},
        {{0.01, 1, 1}, {0.1, 10, 0.2}},
        {{1, 1, 1.8}, {1, 2, 300}, 4, {1, 2, 3}, 70},
        {handle, {0.001, 0.05, 0.002}}, // and falls asleep no more than it slows down
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(textOf(each.moments) + " at " + textOf(each.velocity));
        const Solid solid = {"body", 1, each.moments, each.centre, each.axis, each.degrees};
        const osg::Quat frame(each.degrees * pi / 180, each.axis);
        ColladaScene scene("0 0 0");
        solid.addTo(scene, "", turning(frame * each.velocity));
        LoadedWorld loaded(scene);
        // What the engine has read, in single precision.
        EulersTop top(each.moments, frame.inverse() * vectorOf(solid.in(loaded).getAngularVelocity()));
        const Motion start(loaded, {solid});
        double off = 0;
        for (int i = 0; i < 60 * each.seconds; ++i) {
            loaded.run(1);
            top.run(1.0 / 60);
            for (int axis = 0; axis < 3; ++axis) {
                off = std::max(off, (frame * (top.turned * unit(axis)) - solid.axisIn(loaded, axis)).length());
            }
        }
        const Motion end(loaded, {solid});
        EXPECT_NEAR(end.energy / start.energy, 1, 1e-3);
        EXPECT_LT((end.angular - start.angular).length(), 1e-3 * start.angular.length());
        EXPECT_LT(off, 5e-4 * each.velocity.length() * each.seconds) << "in radians, of those that it has turned by";
    }
}

TEST(FreeMotion, ATopNutatesAsMechanicsSays) {
    // Let go at a tilt, it goes down to the second one and up again. On a tip it also slips, which sets it up a little.
    for (const auto& [speed, size, isHeld] : {std::tuple(60.0, 1.0, true),
                                              {100.0, 0.1, true},
                                              {1000.0, 3.0, true},
                                              {100.0, 1.0, false},
                                              {300.0, 3.0, false}}) {
        SCOPED_TRACE(std::to_string(speed) + " of size " + std::to_string(size));
        const Vec3d moments = Vec3d(0.1, 0.1, 0.12) * (size * size);
        const double height = 0.5 * size;
        const double tip = isHeld ? 0 : 0.02 * size;
        const Solid top = {"top", 2, moments, {0, 0, height}, {1, 0, 0}, 0, tip > 0 ? tip : 0.05 * size};
        const double tilt = 20 * pi / 180;
        const double spin = speed / std::sqrt(size);
        ColladaScene scene;
        const Vec3d axis(std::sin(tilt), 0, std::cos(tilt));
        top.addTo(scene, translate(0, 0, tip) + "<rotate>0 1 0 20</rotate>", turning(axis * spin));
        if (isHeld) {
            addConstraint(scene, "tip", {origin, attachment("top"), "0 0 0", "0 0 0", "-INF -INF -INF", "INF INF INF"});
        } else {
            scene.add("ground", "", ground);
        }
        LoadedWorld loaded(scene);
        double least = 90;
        double most = 0;
        for (int i = 0; i < 1200; ++i) {
            loaded.run(1);
            const double now = std::acos(top.axisIn(loaded, 2).z()) * 180 / pi;
            least = std::min(least, now);
            most = std::max(most, now);
        }
        const double ratio =
            std::pow(moments.z() * spin, 2) / (4 * (moments.x() + 2 * height * height) * 2 * 10 * height);
        const double lowest = std::acos(ratio - std::sqrt(ratio * ratio - 2 * ratio * axis.z() + 1)) * 180 / pi;
        EXPECT_NEAR(least, 20, isHeld ? 0.5 : 5);
        EXPECT_NEAR(most, lowest, isHeld ? 0.3 : 5);
    }
}

TEST(FreeMotion, ARotorOutOfBalanceStaysOnItsAxis) {
    for (const double speed : {20.0, 200.0, 2000.0, 20000.0}) {
        const Solid rotor = {"rotor", 2, {0.2, 0.4, 0.5}, {}, {1, 2, 3}, 30};
        ColladaScene scene;
        rotor.addTo(scene, "", turning({0, 0, speed}));
        addHinge(scene, origin, attachment("rotor"), "0 0 -INF", "0 0 INF");
        LoadedWorld loaded(scene);
        for (int i = 0; i < 120; ++i) {
            loaded.run(1);
            const Pose pose = loaded.pose("rotor");
            ASSERT_LT(std::hypot(pose(0, 2), pose(1, 2)), 0.01) << speed;
        }
        const double now = rotor.in(loaded).getAngularVelocity()[2];
        EXPECT_LT(now, speed * 1.02);
        EXPECT_GT(now, speed > 2000 ? 2000 : speed * 0.99); // no joint can hold what turns too far in a step
    }
}

TEST(FreeMotion, JointsMakeNeitherEnergyNorMomentum) {
    const std::string damped = "<spring><linear><stiffness>20</stiffness><damping>0.5</damping></linear></spring>";
    const struct {
        std::string name;
        Constraint joint;
        bool loses = false;
        double stiffness = 0;
    } joints[] = {
        {"slider", {"", "", "-INF 0 0", "INF 0 0"}},
        {"slider with limits", {"", "", "-1 0 0", "0.5 0 0"}, true},
        {"damped spring", {"", "", "0 -INF 0", "0 INF 0", "0 0 0", "0 0 0", damped}, true, 20},
        {"planar", {"", "", "-INF -INF 0", "INF INF 0", "0 0 -INF", "0 0 INF"}},
        {"planar with limits", {"", "", "-1 -1 0", "1 1 0", "0 0 -40", "0 0 40"}, true},
        {"cylindrical", {"", "", "0 0 -INF", "0 0 INF", "0 0 -INF", "0 0 INF"}},
    };
    std::mt19937 random(7);
    const auto vector = [&](double size) {
        std::uniform_real_distribution<> number(-size, size);
        return Vec3d(number(random), number(random), number(random));
    };
    for (const auto& each : joints) {
        // Alike and centred; turned, off their centres and of unequal masses.
        for (const double mass : {2.0, 0.1, 15.0}) {
            SCOPED_TRACE(each.name + " of " + std::to_string(mass));
            const bool isPlain = mass == 2;
            std::vector<Solid> solids = {{"a", 2, {0.8, 0.5, 0.6}}, {"b", mass, Vec3d(0.3, 0.35, 0.1) * mass}};
            for (Solid& solid : solids) {
                solid.centre = isPlain ? Vec3d() : vector(0.3);
                solid.axis = vector(1);
                solid.degrees = isPlain ? 0 : vector(180).x();
            }
            ColladaScene scene("0 0 0");
            solids[0].addTo(scene, "", "<velocity>0.5 0.2 -0.3</velocity>" + turning({1, 0.7, 1.5}));
            solids[1].addTo(scene, translate(1, 0.5, 0),
                            "<velocity>-0.2 0.1 0.6</velocity>" + turning({-0.5, 0.3, 0.9}));
            const std::string frame = isPlain ? "" : "<rotate>1 2 3 50</rotate>";
            Constraint joint = each.joint;
            joint.first = refAttachment("a", translate(1, 0.5, 0) + frame);
            joint.second = attachment("b", frame);
            addConstraint(scene, "joint", joint);
            LoadedWorld loaded(scene);
            const auto energy = [&] {
                const double stretch = jointOf(loaded).getPosition(JointAxis::translationY);
                return Motion(loaded, solids).energy + each.stiffness * stretch * stretch / 2;
            };
            const Motion start(loaded, solids);
            loaded.run(1); // which takes what the joint doesn't let them have
            const double first = energy();
            double most = 0;
            for (int second = 0; second < 60; ++second) {
                loaded.run(60);
                most = std::max(most, energy());
            }
            const Motion end(loaded, solids);
            EXPECT_LT(most, first * 1.001);
            EXPECT_TRUE(each.loses || end.energy > first * 0.999) << end.energy << " of " << first;
            EXPECT_LT((end.momentum - start.momentum).length(), 1e-4 * start.momentum.length());
            EXPECT_LT((end.angular - start.angular).length(), 0.01 * start.angular.length());
            EXPECT_LT(offAxes(jointOf(loaded)), 0.01);
        }
    }
}

} // namespace tessarin::dynamics::bullet
