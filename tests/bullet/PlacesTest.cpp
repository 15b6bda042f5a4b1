// Names and first poses of bodies against the model as OpenSceneGraph's COLLADA plugin loads it from the same file.

#include <tests/bullet/ColladaScene.h>
#include <tests/bullet/ModelNodes.h>

#include <gtest/gtest.h>

namespace tessarin::dynamics::bullet {

namespace {

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

} // namespace

TEST(Places, AreThoseOfTheModelForEveryTransformAndUpAxis) {
    const char* const transforms[] = {
        "",
        "<translate>1 2 3</translate>",
        "<translate>1, 2, 3</translate>",
        "<rotate>1 2 3 40</rotate><translate>0 0 5</translate><rotate>0 1 0 -70</rotate>",
        "<translate>4 5 6</translate><rotate>1 0 1 30</rotate><scale>2 3 0.25</scale>",
        "<translate>4 5 6</translate><rotate>1 0 1 30</rotate><scale>-2 3 1</scale>",
        "<matrix>0 -2 0 7 2 0 0 8 0 0 2 9 0 0 0 1</matrix>",
        "<lookat>1 2 3 4 6 5 0 0 1</lookat>",
        "<skew>20 1 1 0 0 0 1</skew><translate>1 2 3</translate>",
        "<translate>1 2</translate><rotate>0 0 1 90</rotate><scale>one</scale>",
    };
    for (const char* axis : {"", "X_UP", "Y_UP", "Z_UP"}) {
        ColladaScene scene;
        scene.upAxis = *axis ? "<unit name='inch' meter='0.0254'/><up_axis>" + std::string(axis) + "</up_axis>" : "";
        for (const char* const& transform : transforms) {
            scene.add("n" + std::to_string(&transform - transforms), transform, ball());
        }
        expectAsInModel(scene);
    }
}

TEST(Places, FollowNestedAndInstancedNodes) {
    ColladaScene scene;
    scene.bodies = "<rigid_body sid='shared'><technique_common>" + ball() + "</technique_common></rigid_body>";
    scene.nodes =
        "<node id='a' name='A'><translate>1 0 0</translate><scale>2 1 1</scale>"
        "<node id='b'><rotate>0 0 1 30</rotate><node id='c' name='C'><translate>0 3 0</translate></node></node>"
        "<instance_node url='#library'/></node>"
        "<node id='again'><translate>99 0 0</translate><instance_node url='#library'/></node>"
        "</visual_scene></library_visual_scenes><library_nodes><node id='library' name='L'><translate>0 0 1</translate>"
        "<node id='inner' name='Inner'><rotate>1 0 0 15</rotate></node></node></library_nodes>"
        "<library_visual_scenes><visual_scene id='other'>";
    for (const std::string name : {"a", "b", "c", "library", "inner"}) {
        scene.instances += "<instance_rigid_body body='shared' target='#" + name + "'/>";
    }
    EXPECT_EQ(LoadedWorld(scene).names(), (std::vector<std::string>{"A", "b", "C", "L", "Inner"}));
    expectAsInModel(scene);
}

TEST(Places, PlacementGoesOnTop) {
    ColladaScene scene("0 0 -5");
    scene.add("box", "<translate>1 0 0</translate>", box("1 1 1"), "<velocity>1 0 0</velocity>");
    LoadedWorld loaded;
    Pose placement;
    placement.set(0, -3, 0, 10, 3, 0, 0, 20, 0, 0, 3, 30, 0, 0, 0, 1);
    loaded.load(scene.text(), placement);
    const Pose pose = loaded.pose("box");
    EXPECT_NEAR(pose(0, 3), 10, 1e-6);
    EXPECT_NEAR(pose(1, 3), 23, 1e-6);
    EXPECT_NEAR(pose(1, 0), 1, 1e-6);
    EXPECT_EQ(loaded.world->getGravity()[2], -5);
    loaded.world->setGravity({0, 0, 0});
    loaded.run(60);
    EXPECT_NEAR(loaded.at("box", 1), 24, 1e-3);
}

} // namespace tessarin::dynamics::bullet
