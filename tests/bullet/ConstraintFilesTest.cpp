// How constraints and instances of models find each other in a file, and what a fault among them costs.

#include <tests/bullet/JointScene.h>
#include <tests/doubles/LogCapture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string ball = "<shape><sphere><radius>0.5</radius></sphere></shape>";

std::vector<std::string> jointNames(const LoadedWorld& loaded) {
    std::vector<std::string> names;
    for (const auto& joint : loaded.joints) {
        names.push_back(joint->name);
    }
    return names;
}

} // namespace

TEST(ConstraintFiles, ConstraintsAreFoundHoweverTheFileNamesThem) {
    ColladaScene scene;
    Constraint weld;
    weld.first = refAttachment("#a");
    weld.second = attachment("model/b");
    scene.bodies = weld.text("sid='one' name='first of them'") + weld.text("sid='twin' name='left'") +
                   weld.text("sid='twin' name='right'") + weld.text("name='plain'");
    weld.second = attachment("#nodeOfB");
    scene.bodies += weld.text("sid='byNode'");
    // Before the bodies that they hold.
    scene.instances =
        "<instance_rigid_constraint constraint='model/one'/><instance_rigid_constraint constraint='twin'/>"
        "<instance_rigid_constraint constraint='#twin'/><instance_rigid_constraint constraint='twin'/>"
        "<instance_rigid_constraint constraint='plain' name='mine'/>"
        "<instance_rigid_constraint constraint='byNode'/>";
    scene.add("a", "", ball);
    scene.nodes += "<node id='nodeOfB' name='B'><translate>2 0 0</translate></node>";
    scene.bodies += "<rigid_body sid='b'><technique_common>" + ball + "</technique_common></rigid_body>";
    scene.instances += "<instance_rigid_body body='b' target='#nodeOfB'/>";
    doubles::LogCapture log("dynamics");
    const LoadedWorld loaded(scene);
    EXPECT_THAT(log.takeErrors(), ElementsAre());
    EXPECT_THAT(jointNames(loaded), ElementsAre("first of them", "left", "right", "right", "mine", "byNode"));
    for (const auto& joint : loaded.joints) {
        const auto& bullet = dynamic_cast<BulletJoint&>(*joint);
        EXPECT_EQ(bullet.getFirstBody(), &loaded.body("a"));
        EXPECT_EQ(bullet.getSecondBody(), &loaded.body("B"));
    }
}

TEST(ConstraintFiles, AttachmentsStandWhereTheFileSays) {
    ColladaScene scene;
    scene.upAxis = "<up_axis>Y_UP</up_axis>";
    scene.add("ball", "<translate>1 5 0</translate><rotate>0 0 1 90</rotate><scale>2 2 2</scale>", ball);
    scene.nodes += "<node id='post'><translate>0 0 7</translate></node>";
    const std::string onBall = attachment("ball", "<translate>0 1 0</translate>");
    const struct {
        const char* name;
        std::string first;
        double place[3]; // of the first attachment in the world, where Y has become Z
    } cases[] = {
        {"world", "<ref_attachment><translate>1 2 3</translate></ref_attachment>", {1, -3, 2}},
        {"missing", "", {-1, 0, 5}},
        {"empty", "<ref_attachment rigid_body=''/>", {-1, 0, 5}},
        {"node", refAttachment("#post", "<translate>1 0 0</translate>"), {1, -7, 0}},
    };
    for (const auto& each : cases) {
        Constraint constraint;
        constraint.first = each.first;
        constraint.second = onBall;
        addConstraint(scene, each.name, constraint);
    }
    const LoadedWorld loaded(scene);
    ASSERT_EQ(loaded.joints.size(), 4U);
    for (const auto& each : cases) {
        const BulletJoint& joint = jointOf(loaded, each.name);
        EXPECT_EQ(joint.getFirstBody(), nullptr);
        for (unsigned i = 0; i < 3; ++i) {
            const double onWorld[3] = {-1, 0, 5}; // 2 to the left of the ball, which is turned and twice as large
            EXPECT_NEAR(joint.getFirstFrame()(i, 3), each.place[i], 1e-5) << each.name;
            EXPECT_NEAR(joint.getSecondFrame()(i, 3), onWorld[i], 1e-5) << each.name;
        }
    }
}

TEST(ConstraintFiles, AFaultCostsItsJointAlone) {
    const struct {
        std::string instance;
        std::string constraint;
        const char* message;
        bool hasJoint;
    } cases[] = {
        {"nobody", "", "no rigid constraint 'nobody'", false},
        {"", attachment("nobody") + refAttachment("a"), "no rigid body 'nobody'", false},
        {"", attachment("faulty") + refAttachment("a"), "was left out", false},
        {"", "<attachment><translate>1 0 0</translate></attachment>", "attached to no body", false},
        {"", attachment("a") + refAttachment("a"), "to one body", false},
        {"",
         attachment("a") + refAttachment("b") +
             "<technique_common><limits><linear><min>0 x 0</min></linear></limits>"
             "</technique_common>",
         "three numbers", true},
        {"",
         attachment("a") + refAttachment("b") +
             "<technique_common><spring><linear><stiffness>-1</stiffness></linear>"
             "</spring></technique_common>",
         "spring", true},
        {"", attachment("a", "<translate>1e300 0 0</translate><scale>1e300 1 1</scale>") + refAttachment("b"),
         "out of range", false},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.message);
        ColladaScene scene;
        scene.add("a", "", ball).add("b", "<translate>9 0 0</translate>", ball).add("faulty", "", "");
        Constraint good;
        good.first = refAttachment("a");
        good.second = attachment("b");
        addConstraint(scene, "good", good);
        scene.bodies += "<rigid_constraint sid='bad'>" + each.constraint + "</rigid_constraint>";
        scene.instances +=
            "<instance_rigid_constraint constraint='" + (each.instance.empty() ? "bad" : each.instance) + "'/>";
        doubles::LogCapture log("dynamics");
        LoadedWorld loaded(scene);
        std::vector<std::string> lines = log.takeErrors();
        ASSERT_EQ(lines.size(), 2U); // the body without shapes has one
        EXPECT_TRUE(lines[0].find(each.message) != std::string::npos ||
                    lines[1].find(each.message) != std::string::npos)
            << lines[0] << lines[1];
        EXPECT_EQ(loaded.bodies.size(), 2U);
        EXPECT_EQ(loaded.joints.size(), each.hasJoint ? 2U : 1U);
        loaded.run(30);
        EXPECT_TRUE(std::isfinite(loaded.at("a", 2)));
    }
}

TEST(ConstraintFiles, ModelsAreInstancedUnderTheirParentsAndInOneAnother) {
    // One model twice, the second time under a node, and that one holds another model with a placement of its own.
    ColladaScene scene;
    scene.nodes = "<node id='post'><translate>0 0 10</translate><rotate>0 0 1 90</rotate><node id='below'>"
                  "<translate>3 0 0</translate></node></node><node id='free'><translate>1 0 0</translate></node>"
                  "<node id='deep'/>";
    scene.bodies = "<rigid_body sid='x'><technique_common>" + ball + "</technique_common></rigid_body>" +
                   "<instance_physics_model url='#inner'><translate>0 0 1</translate><instance_rigid_body body='y' "
                   "target='#deep'/><instance_rigid_constraint constraint='pin'/></instance_physics_model>";
    scene.instances = "<instance_rigid_body body='x' target='#free'/></instance_physics_model>"
                      "<instance_physics_model url='#model' parent='#post'><instance_rigid_body body='x' "
                      "target='#below'/><instance_rigid_body body='x' target='#free'/>";
    std::string text = scene.text();
    text.replace(text.find("</library_physics_models>"), 0,
                 "<physics_model id='inner'><rigid_body sid='y'><technique_common>" + ball +
                     "</technique_common></rigid_body><rigid_constraint sid='pin'>" + attachment("y") +
                     "</rigid_constraint></physics_model>");
    const LoadedWorld loaded(text);
    EXPECT_EQ(loaded.names(), (std::vector<std::string>{"free", "deep", "below", "free", "deep"}));
    const double places[5][3] = {{1, 0, 0}, {0, 0, 1}, {0, 3, 10}, {0, 1, 10}, {0, 0, 11}};
    for (std::size_t i = 0; i < 5; ++i) {
        Pose pose;
        loaded.bodies[i]->getMatrix(pose);
        for (unsigned axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(pose(axis, 3), places[i][axis], 1e-5) << i;
        }
    }
    ASSERT_EQ(loaded.joints.size(), 2U);
    EXPECT_EQ(dynamic_cast<BulletJoint&>(*loaded.joints[0]).getSecondBody(), loaded.bodies[1].get());
    EXPECT_EQ(dynamic_cast<BulletJoint&>(*loaded.joints[1]).getSecondBody(), loaded.bodies[4].get());
}

TEST(ConstraintFiles, TheTimeStepBecomesTheWorlds) {
    doubles::LogCapture log("dynamics");
    for (const auto& [value, expected] :
         {std::pair("0.025", 0.025), std::pair("0", 1.0 / 60), std::pair("x", 1.0 / 60)}) {
        ColladaScene scene;
        scene.gravity += std::string("</gravity><time_step>") + value + "</time_step><gravity>0 0 -10";
        scene.add("ball", "", ball);
        LoadedWorld loaded(scene);
        EXPECT_EQ(loaded.world->getFixedStep(), expected);
        EXPECT_EQ(log.takeErrors().size(), expected == 0.025 ? 0U : 1U) << value;
        EXPECT_EQ(loaded.world->step(1), static_cast<int>(std::lround(1 / expected)));
        EXPECT_NEAR(loaded.at("ball", 2), -5, 0.1);
    }
}

} // namespace tessarin::dynamics::bullet
