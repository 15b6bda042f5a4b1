// Bodies of every kind are dropped on something and must come to rest at the height that their sizes say.

#include <tests/bullet/ColladaScene.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

const std::string upright = "<rotate>1 0 0 90</rotate>";

struct Drop {
    const char* what;
    std::string transforms; // behind the translation to the start
    std::string shapes;
    double height; // of the node's origin at rest
    double scale = 1;
};

std::string shape(const std::string& geometry) {
    return "<shape>" + geometry + "</shape>";
}

std::string boxOf(const std::string& half) {
    return "<box><half_extents>" + half + "</half_extents></box>";
}

std::string meshOf(const std::string& id) {
    return shape("<instance_geometry url='#" + id + "'/>");
}

ColladaScene withGeometries() {
    ColladaScene scene;
    for (const std::string primitives : {"triangles", "polylist", "polygons", "tristrips", "trifans"}) {
        scene.geometries += boxGeometry(primitives, "0.5", primitives);
    }
    scene.geometries += boxGeometry("convex", "0.5", "polylist", "convex_mesh");
    scene.geometries += "<geometry id='hull'><convex_mesh convex_hull_of='#triangles'/></geometry>";
    scene.geometries += "<geometry id='hullOfHull'><convex_mesh convex_hull_of='hull'/></geometry>";
    return scene;
}

std::vector<Drop> drops() {
    const std::string cylinder = shape("<cylinder><radius>0.5</radius><height>3</height></cylinder>");
    const std::string capsule = shape("<capsule><radius>0.5 0.5</radius><height>2</height></capsule>");
    const std::string ball = shape("<sphere><radius>0.5</radius></sphere>");
    std::vector<Drop> result = {
        {"box", "", shape(boxOf("1 2 3")), 3},
        {"box on its side", "<rotate>0 1 0 90</rotate>", shape(boxOf("1 2 3")), 1},
        {"sphere", "", ball, 0.5},
        {"cylinder standing", upright, cylinder, 1.5},
        {"cylinder lying", "", cylinder, 0.5},
        {"capsule lying", "", capsule, 0.5},
        {"elliptic cylinder standing", upright, shape("<cylinder><radius>1 0.5</radius><height>2</height></cylinder>"),
         1},
        {"elliptic cylinder lying", "", shape("<cylinder><radius>1 0.5</radius><height>3</height></cylinder>"), 0.5},
        {"box, scaled", "<scale>1 1 0.5</scale>", shape(boxOf("1 1 1")), 0.5},
        {"box, mirrored", "<scale>1 1 -2</scale>", shape(boxOf("1 1 1")), 2},
        {"ball to ellipsoid", "<scale>2 2 0.5</scale>", ball, 0.25},
        {"ball scaled in all directions", "<scale>3 3 3</scale>", ball, 1.5},
        {"box turned within a scaled node", "<scale>1 3 0.5</scale>",
         shape(boxOf("1 2 3") + "<rotate>1 0 0 90</rotate>"), 1},
        {"box above its node", "", shape(boxOf("1 1 1") + "<translate>0 0 2</translate>"), -1},
        {"table of two boxes", "",
         shape(boxOf("1 1 0.5") + "<translate>0 0 0.5</translate>") +
             shape(boxOf("2 2 0.25") + "<translate>0 0 1.25</translate>"),
         0},
        {"mesh, scaled", "<scale>2 2 3</scale>", meshOf("convex"), 1.5},
        {"own convex mesh", "", shape("<convex_mesh convex_hull_of='#polygons'/>"), 0.5},
        {"box of a centimetre", "", shape(boxOf("0.01 0.01 0.005")), 0.005, 0.01},
        {"box of a hundred", "", shape(boxOf("100 100 50")), 50, 100},
    };
    for (const std::string id :
         {"triangles", "polylist", "polygons", "tristrips", "trifans", "convex", "hull", "hullOfHull"}) {
        result.push_back({id == "hull" ? "hull of a mesh" : "mesh", "", meshOf(id), 0.5});
    }
    return result;
}

void expectRest(const Drop& drop, ColladaScene scene, double floor) {
    SCOPED_TRACE(std::string(drop.what) + " " + drop.shapes);
    const std::string start = std::to_string(drop.height + floor + 0.2 * drop.scale);
    scene.gravity = "0 0 " + std::to_string(-10 * drop.scale);
    scene.add("body", "<translate>0 0 " + start + "</translate>" + drop.transforms, drop.shapes);
    LoadedWorld loaded(scene);
    ASSERT_EQ(loaded.bodies.size(), 2U);
    loaded.run(600);
    EXPECT_NEAR(loaded.at("body", 2), drop.height + floor, 0.006 * drop.scale);
    EXPECT_FALSE(loaded.body("body").isActive());
}

} // namespace

TEST(Rest, EveryShapeLiesOnAPlane) {
    for (const Drop& drop : drops()) {
        expectRest(drop, withGeometries().addGround(), 0);
    }
}

TEST(Rest, EveryKindOfFloorCarries) {
    const Drop ball = {"ball", "", shape("<sphere><radius>0.5</radius></sphere>"), 0.5};
    const Drop box = {"box", "", shape(boxOf("0.5 0.5 0.5")), 0.5};
    const Drop hull = {"hull", "", meshOf("convex"), 0.5};
    const std::string wide = "<scale>20 20 2</scale>";
    const std::string isStatic = "<dynamic>false</dynamic>";
    const struct {
        std::string transforms;
        std::string shapes;
        double top;
    } floors[] = {
        {"", shape(boxOf("10 10 1")), 1},
        {wide, meshOf("triangles"), 1},
        {wide, meshOf("hull"), 1},
        {"<scale>1 1 3</scale>", shape("<plane><equation>0 0 2 -4</equation></plane>"), 6},
        {"<translate>0 0 5</translate><rotate>1 0 0 90</rotate>",
         shape("<plane><equation>0 1 0 0</equation></plane>") +
             shape(boxOf("1 0.5 1") + "<translate>9 0 0</translate>"),
         5},
    };
    for (const auto& floor : floors) {
        for (const Drop& drop : {ball, box, hull}) {
            expectRest(drop, withGeometries().add("floor", floor.transforms, isStatic + floor.shapes), floor.top);
        }
    }
}

TEST(Rest, ASurfaceIsHollowAndItsHullIsNot) {
    // A gutter open to above: a ball falls into the static surface, and stays on top of the convex one.
    const std::string gutter =
        "<source id='s'><float_array id='a'>-1 -5 2  0 -5 0  1 -5 2  -1 5 2  0 5 0  1 5 2</float_array></source>"
        "<vertices id='v'><input semantic='POSITION' source='#s'/></vertices>"
        "<triangles><input semantic='VERTEX' source='#v' offset='0'/><p>0 1 4 0 4 3 1 2 5 1 5 4</p></triangles>";
    for (const bool convex : {false, true}) {
        const std::string tag = convex ? "convex_mesh" : "mesh";
        ColladaScene scene;
        scene.geometries = "<geometry id='gutter'><" + tag + ">" + gutter + "</" + tag + "></geometry>";
        scene.add("gutter", "", "<dynamic>0</dynamic>" + meshOf("gutter"));
        scene.add("ball", "<translate>0 0 3</translate>", shape("<sphere><radius>0.4</radius></sphere>"));
        LoadedWorld loaded(scene);
        loaded.run(600);
        // In the gutter the ball touches both sides, whose slope is 2.
        EXPECT_NEAR(loaded.at("ball", 2), convex ? 2.4 : 0.4 * std::sqrt(5.0), 0.02);
    }
}

TEST(Rest, AStackStandsAndSleeps) {
    for (const double size : {0.1, 1.0, 20.0}) {
        ColladaScene scene;
        scene.gravity = "0 0 -9.81";
        scene.addGround();
        const std::string half = std::to_string(size / 2);
        for (int i = 0; i < 10; ++i) {
            const std::string z = std::to_string(size * (i + 0.5));
            scene.add("brick" + std::to_string(i), "<translate>0 0 " + z + "</translate>",
                      "<mass>2</mass>" + shape(boxOf(half + " " + half + " " + half)));
        }
        LoadedWorld loaded(scene);
        loaded.run(600);
        for (int i = 0; i < 10; ++i) {
            const std::string name = "brick" + std::to_string(i);
            EXPECT_NEAR(loaded.at(name, 2), size * (i + 0.5), 0.02 * size) << name << " of " << size;
            EXPECT_NEAR(loaded.at(name, 0), 0, 0.02 * size);
            EXPECT_FALSE(loaded.body(name).isActive()) << name << " of " << size;
        }
    }
}

} // namespace tessarin::dynamics::bullet
