// How bodies, constraints and instances of models find each other in a file.

#include <tests/bullet/JointScene.h>
#include <tests/doubles/LogCapture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tessarin::dynamics::bullet {

namespace {

using testing::ElementsAre;

std::string bodyOf(const std::string& attributes) {
    return "<rigid_body " + attributes + "><technique_common>" + ball() + "</technique_common></rigid_body>";
}

} // namespace

TEST(References, LeadToBodiesHoweverTheFileNamesThem) {
    ColladaScene scene;
    scene.nodes = "<node id='n1' name='one'/><node id='n 2' name='two'/><node id='n3' sid='s3'/>"
                  "<node id='left'><node id='lw' sid='wheel'/></node>"
                  "<node id='right'><node><node id='rw' sid='wheel'/></node></node>"
                  "<node id='up'><node sid='nameless'/></node>";
    scene.bodies = bodyOf("name='first'") + bodyOf("id='second' sid='x'") + bodyOf("name='of wood/small'") +
                   "<instance_physics_model url='#inner'/>";
    scene.instances =
        "<instance_rigid_body target='#n1' body='first'/><instance_rigid_body body='#second' target='two'/>"
        "<instance_rigid_body body='inner/third' target='#s3'/>"
        "<instance_rigid_body target='./FILE#n%202' body='first'><dynamic>0</dynamic>" +
        ball() +
        "</instance_rigid_body><instance_rigid_body body='x' target='left/wheel'/>"
        "<instance_rigid_body body='x' target='#right/wheel'/>"
        "<instance_rigid_body body='of%20wood/small' target='up/nameless'/></instance_physics_model>"
        "<instance_physics_model url='file:///C:/some%20where/FILE#inner'><instance_rigid_body target='#n1'/>"
        "</instance_physics_model><instance_physics_model url='other.dae#inner'>";
    scene.models = "<physics_model id='inner'>" + bodyOf("sid='third'") + "</physics_model>";
    const ScratchFile file("");
    std::string text = scene.text();
    for (std::size_t at = 0; (at = text.find("FILE")) != std::string::npos;) {
        text.replace(at, 4, std::filesystem::path(file.path).filename().string());
    }
    std::ofstream(file.path) << text;
    doubles::LogCapture log("dynamics");
    LoadedWorld loaded;
    loaded.world->loadScene(file.path, Pose(), loaded);
    EXPECT_THAT(log.takeErrors(),
                ElementsAre(testing::HasSubstr("other.dae#inner\">: there is no such physics model")));
    ASSERT_THAT(loaded.names(), ElementsAre("one", "two", "n3", "n 2", "lw", "rw", "nameless", "n1"));
    loaded.run(60);
    EXPECT_EQ(LoadedWorld::poseOf(*loaded.bodies[3])(2, 3), 0) << "made static by its instance";
    EXPECT_LT(loaded.at("n3", 2), -1);
}

TEST(References, LeadToConstraintsHoweverTheFileNamesThem) {
    ColladaScene scene;
    Constraint weld = {refAttachment("#a"), attachment("model/b")};
    scene.bodies = weld.text("sid='one' name='first of them'") + weld.text("sid='twin' name='left'") +
                   weld.text("sid='twin' name='right'") + weld.text("name='plain'");
    weld.second = attachment("#nodeOfB");
    scene.bodies += weld.text("sid='byNode'") + bodyOf("sid='b'");
    // Before the bodies that they hold.
    for (const char* reference : {"model/one", "twin", "#twin", "twin", "plain' name='mine", "byNode"}) {
        scene.instances += "<instance_rigid_constraint constraint='" + std::string(reference) + "'/>";
    }
    scene.add("a", "", ball());
    scene.nodes += "<node id='nodeOfB' name='B'><translate>2 0 0</translate></node>";
    scene.instances += "<instance_rigid_body body='b' target='#nodeOfB'/>";
    doubles::LogCapture log("dynamics");
    const LoadedWorld loaded(scene);
    EXPECT_THAT(log.takeErrors(), ElementsAre());
    const char* const names[] = {"first of them", "left", "right", "right", "mine", "byNode"};
    ASSERT_EQ(loaded.joints.size(), std::size(names));
    for (std::size_t i = 0; i < std::size(names); ++i) {
        EXPECT_EQ(loaded.joints[i]->name, names[i]);
        EXPECT_EQ(jointOf(loaded, i).getFirstBody(), &loaded.body("a"));
        EXPECT_EQ(jointOf(loaded, i).getSecondBody(), &loaded.body("B"));
    }
}

TEST(References, PathsTellTheInstancesOfOneModelApart) {
    ColladaScene scene;
    scene.models = "<physics_model id='leg'>" + bodyOf("sid='thigh'") + bodyOf("sid='foot'") +
                   Constraint{refAttachment("thigh"), attachment("foot")}.text("sid='knee'") + "</physics_model>";
    scene.bodies = bodyOf("sid='hip'");
    for (const std::string side : {"L", "R"}) {
        scene.bodies +=
            "<instance_physics_model sid='" + side + "' url='#leg'/>" +
            Constraint{refAttachment("./hip"), attachment("./" + side + "/thigh")}.text("sid='" + side + "'");
        for (const std::string part : {"thigh", "foot"}) {
            scene.nodes += "<node id='" + side + part + "'/>";
            scene.instances += "<instance_rigid_body body='" + side + "/" + part + "' target='#" + side + part + "'/>";
        }
        scene.instances += "<instance_rigid_constraint constraint='" + side +
                           "'/>"
                           "<instance_rigid_constraint constraint='" +
                           side + "/knee'/>";
    }
    scene.nodes += "<node id='hip'/>";
    scene.instances += "<instance_rigid_body body='hip' target='#hip'/>";
    const LoadedWorld loaded(scene);
    const std::string ends[][2] = {{"hip", "Lthigh"}, {"Lthigh", "Lfoot"}, {"hip", "Rthigh"}, {"Rthigh", "Rfoot"}};
    ASSERT_EQ(loaded.joints.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(jointOf(loaded, i).getFirstBody()->getName(), ends[i][0]);
        EXPECT_EQ(jointOf(loaded, i).getSecondBody()->getName(), ends[i][1]);
    }
}

TEST(References, AttachmentsToTheWorldAreWhereTheOtherSideIsOrAsPlaced) {
    const struct {
        std::string first;
        double place[3]; // of the first attachment in the world, where Y has become Z
    } cases[] = {
        {"<ref_attachment><translate>0 0 3</translate><rotate>0 0 1 90</rotate><translate>2 -1 0</translate>"
         "</ref_attachment>",
         {1, -3, 2}},
        {"", {-1, 0, 5}},
        {"<ref_attachment rigid_body=''/>", {-1, 0, 5}},
        {"<ref_attachment rigid_body='#'/>", {-1, 0, 5}},
        {refAttachment("#post", "<translate>1 0 0</translate>"), {1, -7, 0}},
        {refAttachment("#view", "<translate>1 0 7</translate>"), {1, -7, 0}}, // the whole scene
    };
    ColladaScene scene;
    scene.upAxis = "<up_axis>Y_UP</up_axis>";
    scene.nodes = "<node id='post'><translate>0 0 7</translate></node>";
    scene.add("ball", "<translate>1 5 0</translate><rotate>0 0 1 90</rotate><scale>2 2 2</scale>", ball());
    for (const auto& each : cases) {
        addConstraint(scene, "c" + std::to_string(&each - cases),
                      {each.first, attachment("ball", "<translate>0 1 0</translate>")});
    }
    addConstraint(scene, "reverse", {refAttachment("ball", "<translate>0 1 0</translate>"), ""});
    const LoadedWorld loaded(scene);
    EXPECT_EQ(jointOf(loaded, std::size(cases)).getSecondBody(), nullptr);
    EXPECT_NEAR(jointOf(loaded, std::size(cases)).getSecondFrame()(2, 3), 5, 1e-5);
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(jointOf(loaded, i).getFirstBody(), nullptr);
        for (unsigned axis = 0; axis < 3; ++axis) {
            const double onWorld[3] = {-1, 0, 5}; // 2 to the left of the ball, which is turned and twice as large
            EXPECT_NEAR(jointOf(loaded, i).getFirstFrame()(axis, 3), cases[i].place[axis], 1e-5) << i;
            EXPECT_NEAR(jointOf(loaded, i).getSecondFrame()(axis, 3), onWorld[axis], 1e-5) << i;
        }
    }
}

TEST(References, ModelsAreInstancedUnderTheirParentsAndInOneAnother) {
    // One model twice, the second time under a node, and that one holds another model with a placement of its own.
    ColladaScene scene;
    scene.nodes = "<node id='post'><translate>0 0 10</translate><rotate>0 0 1 90</rotate><node id='below'>"
                  "<translate>3 0 0</translate></node></node><node id='free'><translate>1 0 0</translate></node>"
                  "<node id='deep'/>";
    scene.bodies = bodyOf("sid='x'") +
                   "<instance_physics_model url='#inner'><translate>0 0 1</translate><instance_rigid_body body='y' "
                   "target='#deep'/><instance_rigid_constraint constraint='pin'/></instance_physics_model>"
                   "<instance_physics_model url='#model'/>"; // itself, which ends there
    scene.instances = "<instance_rigid_body body='x' target='#free'/></instance_physics_model>"
                      "<instance_physics_model url='#model' parent='#post'><instance_rigid_body body='x' "
                      "target='#below'/><instance_rigid_body body='x' target='#free'/>";
    scene.models = "<physics_model id='inner'>" + bodyOf("sid='y'") +
                   Constraint{"", attachment("y")}.text("sid='pin'") + "</physics_model>";
    const LoadedWorld loaded(scene);
    EXPECT_THAT(loaded.names(), ElementsAre("free", "deep", "below", "free 2", "deep 2"));
    const double places[5][3] = {{1, 0, 0}, {0, 0, 1}, {0, 3, 10}, {0, 1, 10}, {0, 0, 11}};
    for (std::size_t i = 0; i < 5; ++i) {
        for (unsigned axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(LoadedWorld::poseOf(*loaded.bodies[i])(axis, 3), places[i][axis], 1e-5) << i;
        }
    }
    ASSERT_EQ(loaded.joints.size(), 2U);
    EXPECT_EQ(jointOf(loaded, 0).getSecondBody(), loaded.bodies[1].get());
    EXPECT_EQ(jointOf(loaded, 1).getSecondBody(), loaded.bodies[4].get());
}

} // namespace tessarin::dynamics::bullet
