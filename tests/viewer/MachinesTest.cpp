#include <tests/viewer/ViewerTest.h>

#include <agent/Input.h>
#include <agent/JointComponent.h>
#include <dynamics/bullet/BulletBodyControl.h>
#include <dynamics/bullet/BulletJoint.h>

#include <gmtl/VecOps.h>

#include <functional>
#include <initializer_list>
#include <set>
#include <utility>

namespace tessarin::viewer {
namespace {

using agent::Input;
using dynamics::bullet::BulletBodyControl;
using dynamics::bullet::BulletJoint;
using dynamics::bullet::JointAxis;

constexpr double degree = 3.14159265358979323846 / 180;

/// A scene whose machines hear the keys "drive+", "drive-" and so on, whatever they are bound to else.
class Machine {
public:
    explicit Machine(const std::string& name) : scene(scenes / name), loop(scene) {
        for (const char* input : {"drive", "steer", "brake", "lift"}) {
            agent::VirtualInput& bound = Input::instance()->getVirtualInput(input);
            before.emplace_back(input, bound);
            bound.name = input;
            bound.axis = -1;
            bound.pos = bound.name + "+";
            bound.neg = bound.name + "-";
        }
    }

    ~Machine() {
        for (const auto& [name, bound] : before)
            Input::instance()->getVirtualInput(name) = bound;
    }

    AgentNode& root() { return scene.getRoot(); }
    AgentNode& part(const std::string& name) { return *root().getChild(name); }
    gmtl::Vec<double, 3> placeOf(const std::string& name) { return part(name).getPosition(); }

    BulletBodyControl& body(const std::string& name) {
        return dynamic_cast<BulletBodyControl&>(*part(name).getRigidBody()->getBody());
    }

    BulletJoint& joint(const std::string& name) {
        auto* const component = dynamic_cast<agent::JointComponent*>(root().getComponent(name));
        return dynamic_cast<BulletJoint&>(*component->getJoint());
    }

    double positionOf(const std::string& name) { return joint(name).getPosition(joint(name).getMainAxis()); }

    /// Runs some seconds with keys held down and calls the function after each frame.
    void hold(
        const std::set<std::string>& keys, double seconds, const std::function<void()>& afterFrame = [] {}) {
        for (const std::string& key : keys)
            Input::instance()->pressButton(key);
        for (long frame = std::lround(seconds * 60); frame > 0; --frame) {
            loop.frame(1.0 / 60);
            Input::instance()->update();
            afterFrame();
        }
        for (const std::string& key : keys)
            Input::instance()->releaseButton(key);
    }

    void remove(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            AgentNode* const child = root().getChild(name);
            root().removeChild(child);
            delete child;
        }
    }

    /// How far the attachments of any joint that lets nothing slide are apart.
    double widestGap() {
        double widest = 0;
        for (dynamics::DynamicsJoint* each : root().getDynamicsJoints()) {
            auto& bullet = dynamic_cast<BulletJoint&>(*each);
            if (bullet.getMainAxis() < JointAxis::rotationX)
                continue;
            const gmtl::Matrix<double, 4, 4> a = bullet.getFirstFrame(), b = bullet.getSecondFrame();
            widest = std::max(widest, std::hypot(a(0, 3) - b(0, 3), a(1, 3) - b(1, 3), a(2, 3) - b(2, 3)));
        }
        return widest;
    }

    /// The Z component of the agent's own Z axis: 1 if it stands upright.
    double uprightness(const std::string& name) {
        const gmtl::Quat<double> turn = part(name).getRotation();
        return 1 - 2 * (turn[0] * turn[0] + turn[1] * turn[1]);
    }

    double headingOf(const std::string& name) {
        return 2 * std::atan2(part(name).getRotation()[2], part(name).getRotation()[3]);
    }

    Scene scene;
    FrameLoop loop;

private:
    std::vector<std::pair<std::string, agent::VirtualInput>> before;
};

using MachinesTest = ViewerTest;

constexpr double wheelRadius = 0.42;
constexpr double rideHeight = 0.74;

void clearTheRoad(Machine& machine) {
    machine.remove({"ramp", "crate_low", "crate_high", "barrel_left", "barrel_right"});
}

TEST_F(MachinesTest, TheTruckDrivesAsItsWheelsTurnBrakesAndComesToRest) {
    Machine machine("truck.xml");
    clearTheRoad(machine);
    const auto expectParked = [&] {
        EXPECT_NEAR(machine.placeOf("truck")[2], rideHeight, 0.01);
        for (const char* corner : {"front_left", "front_right", "rear_left", "rear_right"}) {
            const std::string name = std::string("suspension_") + corner;
            EXPECT_NEAR(machine.joint(name).getPosition(JointAxis::translationZ), 0, 0.015) << name;
        }
        EXPECT_FALSE(machine.part("truck").getRigidBody()->getBody()->isActive());
    };
    machine.hold({}, 10);
    expectParked();

    double rolled = 0;
    double lowest = rideHeight, highest = rideHeight;
    machine.hold({"drive+"}, 4, [&] {
        rolled += machine.body("wheel_rear_left").getAngularVelocity()[1] * wheelRadius / 60;
        lowest = std::min(lowest, machine.placeOf("truck")[2]);
        highest = std::max(highest, machine.placeOf("truck")[2]);
    });
    const gmtl::Vec<double, 3> driven = machine.placeOf("truck");
    EXPECT_GT(driven[0], 15);
    EXPECT_NEAR(driven[0], rolled, 0.03 * rolled);
    EXPECT_NEAR(driven[1], 0, 0.1);
    EXPECT_NEAR(machine.body("truck").getLinearVelocity()[0], 8, 0.1);
    EXPECT_GT(lowest, rideHeight - 0.03);
    EXPECT_LT(highest, rideHeight + 0.03);

    machine.hold({"brake+"}, 3);
    EXPECT_NEAR(machine.body("truck").getLinearVelocity()[0], 0, 0.02);
    const double distance = machine.placeOf("truck")[0] - driven[0];
    EXPECT_GT(distance, 8 * 8 / (2 * 0.8 * 9.81)) << "no shorter than the tyres' friction lets it";
    EXPECT_LT(distance, 9);
    machine.hold({}, 10);
    expectParked();
    machine.hold({"drive-"}, 1);
    EXPECT_LT(machine.body("truck").getLinearVelocity()[0], -2) << "it wakes, and reverses";
}

TEST_F(MachinesTest, TheTruckSteersUprightAndCrossesItsRamp) {
    Machine machine("truck.xml");
    machine.hold({}, 0.5);
    double highest = 0, steepest = 1;
    const auto watch = [&] {
        highest = std::max(highest, machine.placeOf("truck")[2]);
        steepest = std::min(steepest, machine.uprightness("truck"));
    };
    machine.hold({"drive+"}, 6, watch);
    EXPECT_GT(highest, rideHeight + 0.7);
    EXPECT_GT(machine.placeOf("truck")[0], 16) << "beyond the ramp";
    EXPECT_NEAR(machine.placeOf("truck")[1], 0, 0.5);
    EXPECT_GT(steepest, 0.9);

    for (const auto& [key, side] : {std::pair{"steer+", -1}, std::pair{"steer-", 1}}) {
        double turned = 0;
        double heading = machine.headingOf("truck");
        machine.hold({"drive+", key}, 3, [&] {
            watch();
            turned += std::remainder(machine.headingOf("truck") - heading, 360 * degree);
            heading = machine.headingOf("truck");
        });
        EXPECT_GT(side * turned, 90 * degree) << key;
        EXPECT_NEAR(machine.joint("suspension_front_left").getPosition(JointAxis::rotationZ), side * 32 * degree, 0.02);
        machine.hold({"drive+"}, 1, watch);
    }
    EXPECT_GT(steepest, 0.9);
    EXPECT_LT(machine.widestGap(), 0.2) << "the front wheels' hubs slide, nothing else does";
}

TEST_F(MachinesTest, MotorsDoWithoutJointsBodiesAndInputsThatHaveGone) {
    Machine machine("truck.xml");
    clearTheRoad(machine);
    machine.hold({"drive+"}, 1);
    machine.remove({"wheel_rear_left", "hub_front_right"});
    agent::Component* const axle = machine.root().getComponent("axle_rear_right");
    machine.root().removeComponent(axle);
    delete axle;
    Input::instance()->getVirtualInput("drive").pos.clear();
    machine.root().getComponent("steer_left")->setAsString("mode", "postion");
    const double steered = machine.joint("suspension_front_left").getPosition(JointAxis::rotationZ);
    machine.hold({"drive+", "steer+"}, 2);
    EXPECT_NEAR(machine.joint("suspension_front_left").getPosition(JointAxis::rotationZ), steered, 0.1)
        << "a mode that isn't one moves nothing";
    EXPECT_LT(machine.placeOf("truck")[2], rideHeight - 0.1) << "it lies on what is left";
}

TEST_F(MachinesTest, TheCraneReachesWhatItsMotorsSayAndKeepsItsLimits) {
    Machine machine("crane.xml");
    double widest = 0, outmost = 0;
    const auto watch = [&] {
        widest = std::max(widest, machine.widestGap());
        outmost = std::max(outmost, machine.positionOf("trolley_slide"));
    };
    machine.hold({"steer+"}, 2, watch);
    EXPECT_NEAR(machine.positionOf("slewing"), -0.35 * 2, 0.05) << "to the right is clockwise";
    machine.hold({}, 1, watch);
    const double rest = machine.positionOf("slewing");
    machine.hold({"drive+"}, 1, watch);
    EXPECT_NEAR(machine.positionOf("trolley_slide"), 1.2, 0.05);
    machine.hold({"lift-"}, 2, watch);
    EXPECT_NEAR(machine.positionOf("hoist_slide"), -1, 0.05);
    EXPECT_NEAR(machine.positionOf("slewing"), rest, 0.005) << "it holds still while the load swings";

    machine.hold({"drive+", "lift-"}, 3, watch);
    EXPECT_NEAR(machine.positionOf("trolley_slide"), 3, 0.01);
    EXPECT_LT(outmost, 3.02);
    EXPECT_NEAR(machine.positionOf("hoist_slide"), -1.9, 0.01);
    machine.hold({"steer-"}, 12, watch);
    EXPECT_NEAR(machine.positionOf("slewing"), 150 * degree, degree);
    EXPECT_LT(widest, 0.005);

    const gmtl::Vec<double, 3> trolley = machine.placeOf("trolley");
    EXPECT_NEAR(std::hypot(trolley[0], trolley[1]), 5.5 + 3, 0.05);
    EXPECT_NEAR(std::atan2(trolley[1], trolley[0]), 150 * degree, 2 * degree);
}

TEST_F(MachinesTest, TheChainHoldsItsBallWhichBreaksTheWall) {
    Machine machine("chain.xml");
    std::vector<std::pair<AgentNode*, gmtl::Vec<double, 3>>> bricks;
    for (AgentNode* child : machine.root().getChildren())
        if (child->getName().compare(0, 6, "brick_") == 0)
            bricks.emplace_back(child, child->getPosition());
    double widest = 0, fastest = 0;
    machine.hold({}, 10, [&] {
        widest = std::max(widest, machine.widestGap());
        fastest = std::max<double>(fastest, gmtl::length(machine.body("ball").getLinearVelocity()));
    });
    EXPECT_LT(widest, 0.005);
    const double height = 5.5 * (1 - std::cos(62 * degree));
    EXPECT_NEAR(fastest, std::sqrt(2 * 9.81 * height), 0.25) << "as it fell, but for the mass of the chain";
    int moved = 0;
    for (const auto& [brick, place] : bricks)
        moved += gmtl::length(gmtl::Vec<double, 3>(brick->getPosition() - place)) > 0.5 ? 1 : 0;
    EXPECT_GT(moved, 10);
    EXPECT_LT(moved, int(bricks.size()));
}

} // namespace
} // namespace tessarin::viewer
