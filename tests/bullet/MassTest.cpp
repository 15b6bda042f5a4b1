// Mass frames, inertia and hollow shapes, seen by how joints let bodies swing.

#include <tests/bullet/JointScene.h>
#include <tests/doubles/LogCapture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

constexpr double pi = 3.14159265358979323846;

/// The moment of inertia about the node's Z axis: what a torsion spring of one unit per radian swings by.
double momentOf(const std::string& properties) {
    ColladaScene scene;
    scene.gravity = "0 0 0";
    scene.add("body", "<rotate>0 0 1 5</rotate>", properties);
    Constraint hinge;
    hinge.first = "<ref_attachment><translate>0 0 0</translate></ref_attachment>";
    hinge.second = attachment("body");
    hinge.angularMin = "0 0 1";
    hinge.angularMax = "0 0 -1";
    hinge.spring = "<spring><angular><stiffness>" + std::to_string(pi / 180) + "</stiffness></angular></spring>";
    addConstraint(scene, "hinge", hinge);
    LoadedWorld loaded(scene);
    const BulletJoint& joint = jointOf(loaded, "hinge");
    double before = joint.getPosition(JointAxis::rotationZ);
    double crossings[2] = {0, 0};
    int count = 0;
    for (int i = 1; i < 6000 && count < 2; ++i) {
        loaded.run(1);
        const double now = joint.getPosition(JointAxis::rotationZ);
        if ((before < 0) != (now < 0)) {
            crossings[count++] = (i - now / (now - before)) / 60;
        }
        before = now;
    }
    const double omega = pi / (crossings[1] - crossings[0]);
    return 1 / (omega * omega);
}

std::string shapeOf(const std::string& geometry, bool hollow = false) {
    return std::string("<mass>3</mass><shape><hollow>") + (hollow ? "true" : "false") + "</hollow>" + geometry +
           "</shape>";
}

} // namespace

TEST(Mass, InertiaIsThatOfTheShapesOrAsGiven) {
    const std::string box = "<box><half_extents>1 0.5 0.25</half_extents></box>";
    const std::string ball = "<sphere><radius>1</radius></sphere>";
    EXPECT_NEAR(momentOf(shapeOf(box)), 3 * 1.25 / 3, 0.02);
    EXPECT_NEAR(momentOf("<inertia>1 1 4</inertia>" + shapeOf(box)), 4, 0.05);
    EXPECT_NEAR(momentOf("<inertia>4 1 1</inertia><mass_frame><rotate>0 1 0 90</rotate></mass_frame>" + shapeOf(box)),
                4, 0.05);
    // A mass frame aside: Steiner's part comes on top.
    EXPECT_NEAR(
        momentOf("<inertia>1 1 4</inertia><mass_frame><translate>0 2 0</translate></mass_frame>" + shapeOf(box)),
        4 + 3 * 4, 0.3);
    EXPECT_NEAR(momentOf(shapeOf(ball)), 0.4 * 3, 0.02);
    EXPECT_NEAR(momentOf(shapeOf(ball, true)), 2.0 / 3 * 3, 0.03);
    // A hollow cube: 5/3 of the solid one's m s^2 / 6.
    const std::string cube = "<box><half_extents>1 1 1</half_extents></box>";
    EXPECT_NEAR(momentOf(shapeOf(cube, true)), 3 * 4.0 / 6 * 5 / 3, 0.04);
    // A box whose faces all differ, from the six of them.
    EXPECT_NEAR(
        momentOf(shapeOf("<box><half_extents>1 2 0.5</half_extents></box>", true)),
        [] {
            const double sum = 2 * (4 * 2 * 0.5 + 4 * 1 * 0.5 + 4 * 1 * 2);
            const double x = 2 * (4 * 2 * 0.5) * (1 + 4.0 / 3);
            const double y = 2 * (4 * 1 * 0.5) * (1.0 / 3 + 4);
            const double z = 2 * (4 * 1 * 2) * (1.0 / 3 + 4.0 / 3);
            return 3 * (x + y + z) / sum;
        }(),
        0.1);
}

TEST(Mass, TaperedShapesAreWhatTheirEndsSay) {
    // A cone's frustum about its axis: 3/10 m (R^5 - r^5) / (R^3 - r^3), its axis turned into Z.
    const std::string radii = "<height>2</height><radius1>0.5 0.5</radius1><radius2>1 1</radius2>";
    const std::string turned = "<rotate>1 0 0 90</rotate>";
    EXPECT_NEAR(momentOf(shapeOf("<tapered_cylinder>" + radii + "</tapered_cylinder>" + turned)),
                0.3 * 3 * (1 - 0.03125) / (1 - 0.125), 0.03);
    // The wide end is the lower one, on which the cone stands.
    ColladaScene scene;
    scene.addGround();
    scene.add("cone", "<translate>0 0 5</translate><rotate>1 0 0 90</rotate>",
              shapeOf("<tapered_cylinder>" + radii + "</tapered_cylinder>"));
    scene.add("drop", "<translate>9 0 5</translate><rotate>1 0 0 90</rotate>",
              shapeOf("<tapered_capsule>" + radii + "</tapered_capsule>"));
    LoadedWorld loaded(scene);
    loaded.run(400);
    EXPECT_NEAR(loaded.at("cone", 2), 1, 0.02);
    EXPECT_GT(loaded.at("drop", 2), 0.5);
    EXPECT_LT(loaded.at("drop", 2), 2.1);
}

TEST(Mass, AnInertiaOfNothingIsSaidAndReplaced) {
    doubles::LogCapture log("dynamics");
    EXPECT_NEAR(momentOf("<inertia>0 0 0</inertia>" + shapeOf("<sphere><radius>1</radius></sphere>")), 1.2, 0.02);
    EXPECT_THAT(log.takeErrors(), testing::ElementsAre(testing::HasSubstr("<inertia>")));
}

} // namespace tessarin::dynamics::bullet
