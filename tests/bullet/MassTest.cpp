// Mass frames, inertia and hollow shapes, seen by how joints and blows move bodies.

#include <tests/bullet/JointScene.h>

#include <dynamics/bullet/BulletBodyControl.h>

#include <gtest/gtest.h>

namespace tessarin::dynamics::bullet {

namespace {

/// The moment of inertia about the node's Z axis: what a torsion spring of one unit per radian swings by, about a
/// target of ten degrees.
double momentOf(const std::string& properties) {
    ColladaScene scene("0 0 0");
    scene.add("body", "<rotate>0 0 1 15</rotate>", properties);
    addHinge(scene, origin, attachment("body"), "0 0 1", "0 0 -1",
             "<spring><angular><target_value>10</target_value><stiffness>" + std::to_string(pi / 180) +
                 "</stiffness></angular></spring>");
    LoadedWorld loaded(scene);
    const auto offset = [&] { return jointOf(loaded).getPosition(JointAxis::rotationZ) - 10 * pi / 180; };
    double before = offset();
    double crossings[2] = {0, 0};
    int count = 0;
    for (int i = 1; i < 6000 && count < 2; ++i) {
        loaded.run(1);
        const double now = offset();
        if ((before < 0) != (now < 0)) {
            crossings[count++] = (i - now / (now - before)) / 60;
        }
        before = now;
    }
    const double omega = pi / (crossings[1] - crossings[0]);
    return 1 / (omega * omega);
}

} // namespace

TEST(Mass, InertiaIsThatOfTheShapesOrAsGiven) {
    const std::string bar = box("1 0.5 0.25");
    const std::string hollow = "<hollow>true</hollow>";
    const std::string cone = "<height>2</height><radius1>0.5 0.5</radius1><radius2>1 1</radius2>";
    // Each face of a hollow box of 1 by 2 by 0.5.
    const double x = 2 * (4 * 2 * 0.5);
    const double y = 2 * (4 * 1 * 0.5);
    const double z = 2 * (4 * 1 * 2);
    const std::pair<std::string, double> cases[] = {
        {bar, 3 * 1.25 / 3},
        {"<inertia>1 1 4</inertia>" + bar, 4},
        {"<inertia>4 1 1</inertia><mass_frame><rotate>0 1 0 90</rotate></mass_frame>" + bar, 4},
        // A mass frame aside: Steiner's part comes on top.
        {"<inertia>1 1 4</inertia><mass_frame><translate>0 2 0</translate></mass_frame>" + bar, 4 + 3 * 4},
        {ball(1), 0.4 * 3},
        {"<inertia>0 0 0</inertia>" + ball(1), 0.4 * 3},
        {ball(1, hollow), 2.0 / 3 * 3},
        {box("1 2 0.5", hollow), 3 * (x * (1 + 4.0 / 3) + y * (1.0 / 3 + 4) + z * (1.0 / 3 + 4.0 / 3)) / (x + y + z)},
        // A cone's frustum about its axis: 3/10 m (R^5 - r^5) / (R^3 - r^3).
        {shape("<tapered_cylinder>" + cone + "</tapered_cylinder><rotate>1 0 0 90</rotate>"),
         0.3 * 3 * (1 - 0.03125) / (1 - 0.125)},
    };
    for (const auto& [properties, moment] : cases) {
        EXPECT_NEAR(momentOf("<mass>3</mass>" + properties), moment, 0.025 * moment) << properties;
    }
}

TEST(Mass, IsWhatTheBodyOrItsShapesSay) {
    // A light ball hits a heavy one of the same size: the speeds afterwards tell the ratio of the masses. Without
    // restitution both go on together, with an eighth of the speed.
    for (const std::string& heavy :
         {"<mass>3.665191</mass>" + ball(), ball(0.5, "<mass>3.665191</mass>"), ball(0.5, "<density>7</density>")}) {
        ColladaScene scene("0 0 0");
        scene.add("light", "<translate>-2 0 0</translate>", ball(), "<velocity>4 0 0</velocity>");
        scene.add("heavy", "", heavy);
        LoadedWorld loaded(scene);
        loaded.run(60);
        const double before = loaded.at("heavy", 0);
        loaded.run(60);
        EXPECT_NEAR(loaded.at("heavy", 0) - before, 0.5, 0.02) << heavy;
    }
}

// Files that count in millimetres hold masses and inertias that are out of the engine's range as they stand.
TEST(Mass, OfMillionsIsHeldAndChangesNothingForOthers) {
    ColladaScene light;
    light.add("ground", "", ground).add("lying", "<translate>0 9 0.5</translate>", "<mass>2</mass>" + box("1 1 0.5"));
    light.add("cart", "<translate>0 0 5</translate>", "<mass>2</mass>" + ball());
    light.add("hung", "<translate>0 5 5</translate>", "<mass>2</mass>" + ball());
    addConstraint(light, "rail", {"", attachment("cart"), "-INF 0 0", "INF 0 0"});
    Constraint rope = {"", attachment("hung"), "0 0 -INF", "0 0 INF"};
    rope.properties = "<spring><linear><stiffness>20</stiffness><damping>12</damping></linear></spring>";
    addConstraint(light, "rope", rope);
    LoadedWorld loaded(light);
    jointOf(loaded).setMotorVelocity(JointAxis::translationX, 1000, 4);
    loaded.run(120);

    ColladaScene heavy;
    heavy.add("crate", "<translate>0 -5000 500</translate>", box("500 500 500"));
    heavy.add("door", "<translate>0 5000 2000</translate>", "<mass>100</mass>" + box("500 50 1000"));
    addHinge(heavy, "", attachment("door", "<translate>400 0 1000</translate>"), "-90 0 0", "90 0 0");
    loaded.load(heavy.text());
    loaded.run(120);
    EXPECT_NEAR(loaded.at("cart", 0), 2 * 4 * 4 / 2, 0.2) << "its motor has a force of 4";
    EXPECT_NEAR(loaded.at("hung", 2), 4, 0.01);
    EXPECT_NEAR(loaded.at("lying", 2), 0.5, 0.01);
    EXPECT_NEAR(loaded.at("crate", 2), 500, 1);
    EXPECT_NEAR(loaded.pose("door")(2, 0), 0, 1e-4) << "it turns about another axis than its hinge's";
    double push = 0;
    for (const BulletContact& contact : loaded.world->getContacts()) {
        push += contact.second == &loaded.body("crate") ? contact.impulse : 0;
    }
    EXPECT_NEAR(push, 1e9 * 10 / 60, 1e7);
    auto& crate = dynamic_cast<BulletBodyControl&>(loaded.body("crate"));
    EXPECT_EQ(crate.getMass(), 1e9);
    crate.applyImpulse({0, 0, 3e9}, crate.getCentreOfMass());
    EXPECT_NEAR(crate.getLinearVelocity()[2], 3, 0.01);
}

} // namespace tessarin::dynamics::bullet
