// Names and first poses of bodies against the model as OpenSceneGraph's COLLADA plugin loads it from the same file.

#include <tests/bullet/ModelNodes.h>

#include <tests/bullet/ColladaScene.h>

#include <gtest/gtest.h>

namespace tessarin::dynamics::bullet {

namespace {

const std::string ball = "<shape><sphere><radius>0.5</radius></sphere></shape>";

void expectAsInModel(const ColladaScene& scene) {
    const ScratchFile file(scene.text());
    const LoadedWorld loaded(scene);
    const ModelNodes model(file.path);
    ASSERT_TRUE(model.isRead());
    ASSERT_FALSE(loaded.bodies.empty());
    for (const auto& body : loaded.bodies) {
        EXPECT_LT(model.distance(*body), 1e-5) << body->getName() << " with " << scene.upAxis;
    }
}

std::string instanceOf(const std::string& name) {
    return "<instance_rigid_body body='shared' target='#" + name + "'/>";
}

} // namespace

TEST(Places, AreThoseOfTheModelForEveryTransformAndUpAxis) {
    for (const char* axis : {"", "X_UP", "Y_UP", "Z_UP"}) {
        ColladaScene scene;
        scene.upAxis = *axis ? "<unit name='inch' meter='0.0254'/><up_axis>" + std::string(axis) + "</up_axis>" : "";
        scene.add("plain", "", ball)
            .add("translated", "<translate>1 2 3</translate>", ball)
            .add("turned", "<rotate>1 2 3 40</rotate><translate>0 0 5</translate><rotate>0 1 0 -70</rotate>", ball)
            .add("scaled", "<translate>4 5 6</translate><rotate>1 0 1 30</rotate><scale>2 3 0.25</scale>", ball)
            .add("mirrored", "<translate>4 5 6</translate><rotate>1 0 1 30</rotate><scale>-2 3 1</scale>", ball)
            .add("matrix", "<matrix>0 -2 0 7 2 0 0 8 0 0 2 9 0 0 0 1</matrix>", ball)
            .add("looking", "<lookat>1 2 3 4 6 5 0 0 1</lookat>", ball)
            .add("skewed", "<skew>20 1 1 0 0 0 1</skew><translate>1 2 3</translate>", ball)
            .add("incomplete", "<translate>1 2</translate><rotate>0 0 1 90</rotate><scale>one</scale>", ball);
        expectAsInModel(scene);
    }
}

TEST(Places, FollowNestedAndInstancedNodes) {
    ColladaScene scene;
    scene.bodies = "<rigid_body sid='shared'><technique_common>" + ball + "</technique_common></rigid_body>";
    scene.nodes =
        "<node id='a' name='A'><translate>1 0 0</translate><scale>2 1 1</scale>"
        "<node id='b'><rotate>0 0 1 30</rotate><node id='c' name='C'><translate>0 3 0</translate></node></node>"
        "<instance_node url='#library'/></node>"
        "<node id='again'><translate>99 0 0</translate><instance_node url='#library'/></node>";
    scene.nodes += "</visual_scene></library_visual_scenes><library_nodes><node id='library' name='L'>"
                   "<translate>0 0 1</translate><node id='inner' name='Inner'><rotate>1 0 0 15</rotate></node></node>"
                   "</library_nodes><library_visual_scenes><visual_scene id='other'>";
    for (const char* name : {"a", "b", "c", "library", "inner"}) {
        scene.instances += instanceOf(name);
    }
    const LoadedWorld loaded(scene);
    EXPECT_EQ(loaded.names(), (std::vector<std::string>{"A", "b", "C", "L", "Inner"}));
    expectAsInModel(scene);
}

TEST(Places, PlacementGoesOnTop) {
    ColladaScene scene;
    scene.gravity = "0 0 -5";
    scene.add("box", "<translate>1 0 0</translate>", "<shape><box><half_extents>1 1 1</half_extents></box></shape>",
              "<velocity>1 0 0</velocity>");
    LoadedWorld loaded{ColladaScene()};
    Pose placement;
    placement.set(0, -3, 0, 10, 3, 0, 0, 20, 0, 0, 3, 30, 0, 0, 0, 1);
    loaded.load(scene, placement);
    const Pose pose = loaded.pose("box");
    EXPECT_NEAR(pose(0, 3), 10, 1e-6);
    EXPECT_NEAR(pose(1, 3), 23, 1e-6);
    EXPECT_NEAR(pose(1, 0), 1, 1e-6);
    EXPECT_EQ(loaded.world->getGravity()[2], -5);
    loaded.world->setGravity({0, 0, 0});
    loaded.run(60);
    EXPECT_NEAR(loaded.at("box", 1), 24, 1e-3);
}

TEST(Places, BodiesAreFoundHoweverTheFileNamesThem) {
    ColladaScene scene;
    scene.nodes = "<node id='n1' name='one'/><node id='n2' name='two'/><node id='n3' sid='s3'/>";
    scene.bodies = "<rigid_body name='first'><technique_common><dynamic>TRUE</dynamic>" + ball +
                   "</technique_common></rigid_body><rigid_body id='second' sid='x'><technique_common>" + ball +
                   "</technique_common></rigid_body><instance_physics_model url='#inner'/>";
    scene.instances =
        "<instance_rigid_body target='#n1' body='first'/><instance_rigid_body body='#second' target='two'/>"
        "<instance_rigid_body body='inner/third' target='#s3'/>"
        "<instance_rigid_body target='#n1'><technique_common><dynamic>0</dynamic>" +
        ball +
        "</technique_common></instance_rigid_body></instance_physics_model>"
        "<instance_physics_model url='#inner'><instance_rigid_body target='#n2'/>";
    std::string text = scene.text();
    text.replace(text.find("</library_physics_models>"), 0,
                 "<physics_model id='inner'><rigid_body sid='third'><technique_common>" + ball +
                     "</technique_common></rigid_body></physics_model>");
    LoadedWorld loaded(text);
    EXPECT_EQ(loaded.names(), (std::vector<std::string>{"one", "two", "n3", "one", "two"}));
    // The one that the instance itself describes is static, whatever else falls.
    loaded.run(60);
    Pose pose;
    loaded.bodies[3]->getMatrix(pose);
    EXPECT_EQ(pose(2, 3), 0);
    loaded.bodies[2]->getMatrix(pose);
    EXPECT_NE(pose(2, 3), 0);
}

} // namespace tessarin::dynamics::bullet
