// Worlds put together at random, in which anything may go at any time.

#include <tests/bullet/JointScene.h>

#include <dynamics/bullet/BulletBodyControl.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

class RandomWorld {
public:
    explicit RandomWorld(unsigned seed) : random(seed), loaded(makeScene()) {}

    void run() {
        for (int i = 0; i < 80; ++i) {
            act();
        }
        while (!loaded.bodies.empty() || !loaded.joints.empty()) {
            remove();
            chance(0.3) ? step() : void();
        }
    }

private:
    unsigned below(std::size_t count) { return static_cast<unsigned>(random() % count); }
    double number(double lower, double upper) { return lower + (upper - lower) * below(10001) / 10000.0; }
    bool chance(double part) { return number(0, 1) < part; }

    std::string numbers(double lower, double upper) {
        const auto text = [&] { return std::to_string(number(lower, upper)) + " "; };
        return text() + text() + text();
    }

    std::string solid() {
        const std::string moved = "<translate>" + numbers(-0.3, 0.3) + "</translate>";
        const std::string solids[] = {box(numbers(0.1, 0.8), moved), ball(number(0.1, 0.6), moved), mesh("cube"),
                                      shape("<capsule><radius>0.2</radius><height>0.7</height></capsule>" + moved),
                                      shape("<cylinder><radius>0.3 0.5</radius><height>0.7</height></cylinder>")};
        return solids[below(5)];
    }

    ColladaScene makeScene() {
        ColladaScene scene;
        scene.geometries = boxGeometry("cube", "0.4", "polylist");
        scene.add("ground", "", ground);
        const unsigned bodies = 1 + below(14);
        for (unsigned i = 0; i < bodies; ++i) {
            scene.add("b" + std::to_string(i), "<translate>" + numbers(0, 3) + "</translate>",
                      (chance(0.1) ? fixed : "") + solid() + (chance(0.3) ? solid() : ""),
                      "<velocity>" + numbers(-9, 9) + "</velocity>");
        }
        const std::string ends[] = {"0", "-INF", "INF", "1", "-1"};
        const auto limit = [&] { return ends[below(5)] + " " + ends[below(5)] + " " + ends[below(5)]; };
        const auto side = [&] { return chance(0.2) ? std::string() : "b" + std::to_string(below(bodies)); };
        for (unsigned i = below(12); i > 0; --i) {
            const std::string first = refAttachment(side(), chance(0.5) ? translate(number(-1, 1), 0, 1) : "");
            addConstraint(scene, "j" + std::to_string(i),
                          {first, attachment(side(), "<rotate>1 1 0 " + std::to_string(number(0, 90)) + "</rotate>"),
                           chance(0.5) ? limit() : "0 0 0", "0 0 0", limit(), limit(),
                           chance(0.5) ? "<interpenetrate>1</interpenetrate><spring><linear/><angular/></spring>"
                                       : "<enabled>0</enabled>"});
        }
        return scene;
    }

    void act() {
        if (chance(0.05)) {
            loaded.world.reset();
        } else if (chance(0.1)) {
            remove();
        } else if (chance(0.1) && !loaded.bodies.empty()) {
            DynamicsBody& body = *loaded.bodies[below(loaded.bodies.size())];
            body.prepareMove();
            body.setPosition({1, 2, 3});
            ASSERT_NEAR(LoadedWorld::poseOf(body)(2, 3), 3, 1e-6); // also without its world
            dynamic_cast<BulletBodyControl&>(body).applyImpulse({1, 0, 3}, {0, 0, 0});
        } else if (chance(0.1) && !loaded.joints.empty()) {
            BulletJoint& joint = jointOf(loaded, below(loaded.joints.size()));
            joint.setEnabled(chance(0.8));
            chance(0.5) ? joint.setMotorVelocity(joint.getMainAxis(), 3, 10)
                        : joint.setMotorPosition(joint.getMainAxis(), 0.5, 3, 10);
        } else {
            step();
        }
    }

    void remove() {
        if (!loaded.joints.empty() && chance(0.5)) {
            loaded.joints.erase(loaded.joints.begin() + below(loaded.joints.size()));
        } else if (!loaded.bodies.empty()) {
            removeBody();
        }
    }

    void removeBody() {
        const auto body = loaded.bodies.begin() + below(loaded.bodies.size());
        std::vector<BulletJoint*> losers;
        for (std::size_t i = 0; i < loaded.joints.size(); ++i) {
            BulletJoint& joint = jointOf(loaded, i);
            const bool loses = joint.getFirstBody() == body->get() || joint.getSecondBody() == body->get();
            losers.insert(losers.end(), loses ? 1 : 0, &joint);
        }
        loaded.bodies.erase(body);
        for (BulletJoint* joint : losers) {
            ASSERT_FALSE(joint->isConnected() || joint->getFirstBody() || joint->getSecondBody());
            ASSERT_EQ(joint->getPosition(joint->getMainAxis()), 0);
            ASSERT_EQ(joint->getFirstFrame()(0, 3), 0);
            ASSERT_FALSE(joint->setMotorVelocity(joint->getMainAxis(), 1, 1));
            joint->switchMotorOff(joint->getMainAxis());
            joint->setEnabled(false);
        }
    }

    void step() {
        if (!loaded.world) {
            return;
        }
        loaded.run(1 + static_cast<int>(below(4)));
        ASSERT_TRUE(loaded.areNumbers());
        for (std::size_t i = 0; i < loaded.joints.size(); ++i) {
            ASSERT_TRUE(std::isfinite(jointOf(loaded, i).getPosition(jointOf(loaded, i).getMainAxis())));
        }
        for (const BulletContact& contact : loaded.world->getContacts()) {
            ASSERT_EQ(contact.first == nullptr, contact.second == nullptr);
            if (contact.first && chance(0.05)) {
                removeBody();
            }
        }
    }

    std::mt19937 random;
    LoadedWorld loaded;
};

} // namespace

TEST(Random, WhateverGoesInWhateverOrderIsSafe) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        RandomWorld(seed).run();
    }
}

} // namespace tessarin::dynamics::bullet
