// What the world tells of touching bodies, and how surfaces rub.

#include <tests/bullet/ColladaScene.h>

#include <dynamics/DynamicsUserData.h>

#include <gtest/gtest.h>

namespace tessarin::dynamics::bullet {

namespace {

struct Owner : DynamicsUserData {};

const std::string cube = "<mass>2</mass>" + box("0.5 0.5 0.5");

/// Something on the ground, both of one material.
LoadedWorld onGround(const std::string& sticking, const std::string& sliding, const std::string& gravity,
                     const std::string& what, double height, const std::string& overrides = "") {
    const std::string material = "<physics_material><technique_common><dynamic_friction>" + sliding +
                                 "</dynamic_friction><static_friction>" + sticking +
                                 "</static_friction></technique_common></physics_material>";
    ColladaScene scene(gravity);
    scene.add("ground", "", material + ground);
    // On the shape, which counts where the body has none.
    scene.add("it", translate(0, 0, height), "<shape>" + material + what.substr(7), overrides);
    return LoadedWorld(scene);
}

} // namespace

TEST(Contact, TellsWhoTouchesWhereAndHowHard) {
    ColladaScene scene;
    scene.add("ground", "", ground).add("low", translate(0, 0, 0.5), cube).add("high", translate(0, 0, 3), cube);
    LoadedWorld loaded(scene);
    Owner owner;
    loaded.body("high").setUserData(&owner);
    double impulse = 0;
    int beginnings = 0;
    for (int i = 0; i < 120; ++i) {
        loaded.run(1);
        for (const BulletContact& contact : loaded.world->getContacts()) {
            if (contact.second != &loaded.body("high")) {
                continue;
            }
            EXPECT_EQ(contact.first, &loaded.body("low"));
            EXPECT_EQ(contact.firstUserData, nullptr);
            EXPECT_EQ(contact.secondUserData, &owner);
            EXPECT_NEAR(contact.normal[2], -1, 1e-3);
            EXPECT_NEAR(contact.point[2], 1, 0.05);
            beginnings += contact.began ? 1 : 0;
            impulse += contact.impulse;
        }
        // 1.5 m down take 0.5477 s: that is in the 33rd step.
        EXPECT_TRUE(i < 31 ? beginnings == 0 : i > 33 ? beginnings == 1 : true) << i;
    }
    // All that gravity has given in two seconds has been taken back.
    EXPECT_NEAR(impulse, 2 * 10 * 2, 0.5);
}

TEST(Contact, KeepsTheOrderOfBodiesAndKnowsThoseThatSlept) {
    for (const bool groundFirst : {true, false}) {
        ColladaScene scene;
        scene.add(groundFirst ? "ground" : "box", translate(0, 0, groundFirst ? 0 : 0.5), groundFirst ? ground : cube);
        scene.add(groundFirst ? "box" : "ground", translate(0, 0, groundFirst ? 0.5 : 0), groundFirst ? cube : ground);
        LoadedWorld loaded(scene);
        loaded.run(10);
        ASSERT_EQ(loaded.world->getContacts().size(), 1U);
        EXPECT_EQ(loaded.world->getContacts()[0].first, loaded.bodies[0].get());
        EXPECT_NEAR(loaded.world->getContacts()[0].normal[2], groundFirst ? -1 : 1, 1e-3);
        loaded.run(600);
        EXPECT_TRUE(loaded.world->getContacts().empty());
        loaded.body("box").prepareMove();
        loaded.run(1);
        ASSERT_EQ(loaded.world->getContacts().size(), 1U);
        EXPECT_FALSE(loaded.world->getContacts()[0].began);
    }
}

TEST(Contact, BodiesMayGoWhileTheListIsRead) {
    ColladaScene scene;
    scene.add("ground", "", ground);
    for (int i = 0; i < 5; ++i) {
        scene.add("b" + std::to_string(i), translate(0, 0, 0.5 + i), cube);
    }
    LoadedWorld loaded(scene);
    loaded.run(30);
    Owner owner;
    const std::vector<BulletContact>& contacts = loaded.world->getContacts();
    ASSERT_EQ(contacts.size(), 5U); // the ground and one box, then one pair after the other
    loaded.body("b2").setUserData(&owner);
    EXPECT_EQ(contacts[2].secondUserData, &owner);
    EXPECT_EQ(contacts[3].firstUserData, &owner);
    loaded.bodies.erase(loaded.bodies.begin() + 3); // b2
    EXPECT_EQ(contacts[2].first, nullptr);
    EXPECT_EQ(contacts[2].secondUserData, nullptr);
    EXPECT_EQ(contacts[3].second, nullptr);
    EXPECT_NE(contacts[4].first, nullptr);
    loaded.body("b3").setUserData(&owner);
    EXPECT_EQ(contacts[3].secondUserData, nullptr);
    EXPECT_EQ(contacts[4].firstUserData, &owner);
}

TEST(Surface, SlidesAndSticksAsItsMaterialSays) {
    const std::string flat = box("0.5 0.5 0.1");
    for (const char* friction : {"0.2", "0.6"}) {
        LoadedWorld loaded = onGround("1", friction, "0 0 -10", flat, 0.1, "<velocity>4 0 0</velocity>");
        loaded.run(300);
        const double distance = 16 / (2 * std::stod(friction) * 10);
        EXPECT_NEAR(loaded.at("it", 0), distance, 0.03 * distance + 0.02) << friction;
    }
    // A slope of 0.5: more than what slides, less than what sticks. Once it slides, it is with 5 - 0.3 * 10.
    for (const bool isPushed : {false, true}) {
        LoadedWorld loaded = onGround("0.8", "0.3", "5 0 -10", flat, 0.1, isPushed ? "<velocity>1 0 0</velocity>" : "");
        loaded.run(60);
        EXPECT_NEAR(loaded.at("it", 0), isPushed ? 1 + 0.5 * 2 : 0, 0.05);
    }
}

} // namespace tessarin::dynamics::bullet
