// What the world tells of touching bodies, and how surfaces rub and bounce.

#include <tests/bullet/ColladaScene.h>

#include <dynamics/DynamicsUserData.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

struct Owner : DynamicsUserData {};

const std::string box = "<mass>2</mass><shape><box><half_extents>0.5 0.5 0.5</half_extents></box></shape>";

std::string materialOf(const std::string& sticking, const std::string& sliding, const std::string& bounce) {
    return "<physics_material><technique_common><dynamic_friction>" + sliding + "</dynamic_friction><restitution>" +
           bounce + "</restitution><static_friction>" + sticking +
           "</static_friction></technique_common></physics_material>";
}

} // namespace

TEST(Contact, TellsWhoTouchesWhereAndHowHard) {
    ColladaScene scene;
    scene.addGround();
    scene.add("low", "<translate>0 0 0.5</translate>", box).add("high", "<translate>0 0 3</translate>", box);
    LoadedWorld loaded(scene);
    Owner owner;
    loaded.body("high").setUserData(&owner);
    double impulse = 0;
    int beginnings = 0;
    bool isOver = false;
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
            isOver = true;
        }
        // 1.5 m down take 0.5477 s: that is in the 33rd step.
        EXPECT_TRUE(i < 31 ? !isOver : i > 33 ? isOver : true) << i;
    }
    EXPECT_EQ(beginnings, 1);
    // All that gravity has given in two seconds has been taken back.
    EXPECT_NEAR(impulse, 2 * 10 * 2, 0.5);
}

TEST(Contact, NormalsPointFromTheSecondToTheFirstWhateverCameFirst) {
    for (const bool groundFirst : {true, false}) {
        ColladaScene scene;
        if (groundFirst) {
            scene.addGround();
        }
        scene.add("box", "<translate>0 0 0.5</translate>", box);
        if (!groundFirst) {
            scene.addGround();
        }
        LoadedWorld loaded(scene);
        loaded.run(10);
        ASSERT_EQ(loaded.world->getContacts().size(), 1U);
        const BulletContact& contact = loaded.world->getContacts()[0];
        EXPECT_EQ(contact.first, &loaded.body(groundFirst ? "ground" : "box"));
        EXPECT_NEAR(contact.normal[2], groundFirst ? -1 : 1, 1e-3);
    }
}

TEST(Contact, SleepersAreNotListedAndDoNotBeginAnewWhenWoken) {
    ColladaScene scene;
    scene.addGround();
    scene.add("box", "<translate>0 0 0.5</translate>", box);
    LoadedWorld loaded(scene);
    loaded.run(600);
    loaded.pose("box");
    ASSERT_FALSE(loaded.body("box").isActive());
    EXPECT_TRUE(loaded.world->getContacts().empty());
    loaded.body("box").prepareMove();
    loaded.run(1);
    ASSERT_EQ(loaded.world->getContacts().size(), 1U);
    EXPECT_FALSE(loaded.world->getContacts()[0].began);
}

TEST(Contact, BodiesMayGoWhileTheListIsRead) {
    ColladaScene scene;
    scene.addGround();
    for (int i = 0; i < 5; ++i) {
        scene.add("b" + std::to_string(i), "<translate>0 0 " + std::to_string(0.5 + i) + "</translate>", box);
    }
    LoadedWorld loaded(scene);
    loaded.run(30);
    Owner owner;
    const std::vector<BulletContact>& contacts = loaded.world->getContacts();
    ASSERT_EQ(contacts.size(), 5U); // the ground and one box, then one pair after the other
    loaded.body("b2").setUserData(&owner);
    EXPECT_EQ(contacts[2].secondUserData, &owner);
    EXPECT_EQ(contacts[3].firstUserData, &owner);
    for (const BulletContact& contact : contacts) {
        if (contact.first == &loaded.body("b1")) {
            loaded.bodies.erase(loaded.bodies.begin() + 3); // b2
            EXPECT_EQ(contact.first, nullptr);
            EXPECT_EQ(contact.secondUserData, nullptr);
            break;
        }
    }
    EXPECT_EQ(contacts[3].second, nullptr);
    EXPECT_NE(contacts[4].first, nullptr);
    loaded.body("b3").setUserData(&owner);
    EXPECT_EQ(contacts[3].secondUserData, nullptr);
    EXPECT_EQ(contacts[4].firstUserData, &owner);
    loaded.run(60);
    for (const BulletContact& contact : loaded.world->getContacts()) {
        EXPECT_TRUE(contact.first && contact.second);
    }
}

TEST(Surface, SlidingStopsWhereFrictionSays) {
    for (const double friction : {0.2, 0.6}) {
        const std::string material = materialOf("1", std::to_string(friction), "0");
        ColladaScene scene;
        scene.add("ground", "",
                  "<dynamic>false</dynamic>" + material + "<shape><plane><equation>0 0 1 0</equation></plane></shape>");
        const std::string flat =
            "<mass>2</mass><shape>" + material + "<box><half_extents>0.5 0.5 0.1</half_extents></box></shape>";
        scene.add("box", "<translate>0 0 0.1</translate>", flat, "<velocity>4 0 0</velocity>");
        LoadedWorld loaded(scene);
        loaded.run(300);
        const double distance = 16 / (2 * friction * 10);
        EXPECT_NEAR(loaded.at("box", 0), distance, 0.03 * distance + 0.02) << friction;
    }
}

TEST(Surface, StickingHoldsOnASlopeThatSlidingDoesNot) {
    // A slope of 0.5: more than what slides, less than what sticks.
    for (const bool isPushed : {false, true}) {
        ColladaScene scene;
        scene.gravity = "5 0 -10";
        const std::string material = materialOf("0.8", "0.3", "0");
        scene.add("ground", "",
                  "<dynamic>false</dynamic>" + material + "<shape><plane><equation>0 0 1 0</equation></plane></shape>");
        scene.add("box", "<translate>0 0 0.1</translate>",
                  material + "<shape><box><half_extents>0.5 0.5 0.1</half_extents></box></shape>",
                  isPushed ? "<velocity>1 0 0</velocity>" : "");
        LoadedWorld loaded(scene);
        loaded.run(60);
        // Once it slides, it is with 5 - 0.3 * 10.
        EXPECT_NEAR(loaded.at("box", 0), isPushed ? 1 + 0.5 * 2 : 0, 0.05);
    }
}

TEST(Surface, ABallBouncesAsHighAsItsMaterialSays) {
    ColladaScene scene;
    const std::string material = materialOf("0.5", "0.5", "0.6");
    scene.add("ground", "",
              "<dynamic>false</dynamic>" + material + "<shape><plane><equation>0 0 1 0</equation></plane></shape>");
    scene.add("ball", "<translate>0 0 5.5</translate>",
              material + "<shape><sphere><radius>0.5</radius></sphere></shape>");
    LoadedWorld loaded(scene);
    loaded.run(61); // down in one second
    double highest = 0;
    for (int i = 0; i < 80; ++i) {
        loaded.run(1);
        highest = std::max(highest, loaded.at("ball", 2) - 0.5);
    }
    EXPECT_NEAR(highest, 0.36 * 5, 0.1);
}

} // namespace tessarin::dynamics::bullet
