// Bodies of every kind are dropped on something and must come to rest at the height that their sizes say.

#include <tests/bullet/ColladaScene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

const std::string upright = "<rotate>1 0 0 90</rotate>";
const std::string cylinder = shape("<cylinder><radius>0.5</radius><height>3</height></cylinder>");
const std::string elliptic = shape("<cylinder><radius>1 0.5</radius><height>2</height></cylinder>");
const std::string cone = "<height>2</height><radius1>0.02</radius1><radius2>1 1</radius2>";

struct Drop {
    std::string transforms; // behind the translation to the start
    std::string shapes;
    double height; // of the node's origin at rest
    double scale = 1;
};

const Drop drops[] = {
    {"", box("1 2 3"), 3},
    {"<rotate>0 1 0 90</rotate>", box("1 2 3"), 1},
    {"", ball(), 0.5},
    {upright, cylinder, 1.5},
    {"", cylinder, 0.5},
    {"", shape("<capsule><radius>0.5 0.5</radius><height>2</height></capsule>"), 0.5},
    {upright, elliptic, 1},
    {"", elliptic, 0.5},
    {"<rotate>1 0 0 92</rotate>", shape("<tapered_cylinder>" + cone + "</tapered_cylinder>"), 1}, // on its wide end
    {"<scale>1 1 0.5</scale>", box("1 1 1"), 0.5},
    {"<scale>1 1 -2</scale>", box("1 1 1"), 2},
    {"<scale>2 2 0.5</scale>", ball(), 0.25},
    {"<scale>3 3 3</scale>", ball(), 1.5},
    {"<scale>1 3 0.5</scale>", box("1 2 3", "<rotate>1 0 0 90</rotate>"), 1},
    {"", box("1 1 1", "<translate>0 0 2</translate>"), -1},
    {"", box("1 1 0.5", "<translate>0 0 0.5</translate>") + box("2 2 0.25", "<translate>0 0 1.25</translate>"), 0},
    {"<scale>2 2 3</scale>", mesh("convex"), 1.5},
    {"", shape("<convex_mesh convex_hull_of='#polygons'/>"), 0.5},
    {"", box("0.01 0.01 0.005"), 0.005, 0.01},
    {"", box("100 100 50"), 50, 100},
    {"", box("1000 1000 500"), 500, 1000}, // millimetres and no mass: thousands of millions
    {upright,
     shape("<tapered_cylinder><height>1</height><radius1>0</radius1><radius2>1 1</radius2></tapered_cylinder>"), 0.5},
    {"", mesh("triangles"), 0.5},
    {"", mesh("polylist"), 0.5},
    {"", mesh("polygons"), 0.5},
    {"", mesh("tristrips"), 0.5},
    {"", mesh("trifans"), 0.5},
    {"", mesh("hull"), 0.5},
    {"", mesh("hullOfHull"), 0.5},
};

ColladaScene withGeometries() {
    ColladaScene scene;
    for (const std::string primitives : {"triangles", "polylist", "polygons", "tristrips", "trifans"}) {
        scene.geometries += boxGeometry(primitives, "0.5", primitives);
    }
    scene.geometries += boxGeometry("convex", "0.5", "polylist", "convex_mesh") +
                        "<geometry id='hull'><convex_mesh convex_hull_of='#triangles'/></geometry>"
                        "<geometry id='hullOfHull'><convex_mesh convex_hull_of='hull'/></geometry>";
    return scene;
}

void expectRest(const Drop& drop, ColladaScene scene, double floor, double fall) {
    SCOPED_TRACE(drop.transforms + drop.shapes);
    scene.gravity = "0 0 " + std::to_string(-10 * drop.scale);
    scene.add("body", translate(0, 0, drop.height + floor + fall * drop.scale) + drop.transforms, drop.shapes);
    LoadedWorld loaded(scene);
    ASSERT_EQ(loaded.bodies.size(), 2U);
    loaded.run(600);
    EXPECT_NEAR(loaded.at("body", 2), drop.height + floor, 0.006 * drop.scale);
    EXPECT_NEAR(std::hypot(loaded.at("body", 0), loaded.at("body", 1)), 0, 0.05 * drop.scale) << "slipped aside";
    EXPECT_FALSE(loaded.body("body").isActive());
}

} // namespace

TEST(Rest, EveryShapeLiesOnAPlane) {
    for (const Drop& drop : drops) {
        expectRest(drop, withGeometries().add("ground", "", ground), 0, 0.2);
    }
}

TEST(Rest, EveryKindOfFloorCarries) {
    const std::string wide = "<scale>20 20 2</scale>";
    const struct {
        std::string transforms;
        std::string shapes;
        double top;
    } floors[] = {
        {"", box("10 10 1"), 1},
        {wide, mesh("triangles"), 1},
        {wide, mesh("hull"), 1},
        {"<scale>1 1 3</scale>", shape("<plane><equation>0 0 2 -4</equation></plane>"), 6},
        {"", box("10 10 0"), 0},
        {"<rotate>1 1 0 180</rotate>", box("100 50 1e-9"), 0},
        {"<rotate>0 1 0 -90</rotate><scale>1 2 2</scale>", box("0 5 5"), 0},
        {upright, shape("<cylinder><radius>9 5</radius><height>0</height></cylinder>"), 0},
        {"<translate>0 0 5</translate><rotate>1 0 0 90</rotate>",
         shape("<plane><equation>0 1 0 0</equation></plane>") + box("1 0.5 1", "<translate>9 0 0</translate>"), 5},
    };
    for (const auto& floor : floors) {
        for (const std::string& shapes : {ball(), box("0.5 0.5 0.5"), mesh("convex")}) {
            const ColladaScene scene = withGeometries().add("floor", floor.transforms, fixed + floor.shapes);
            expectRest({"", shapes, 0.5}, scene, floor.top, 4);
        }
    }
}

TEST(Rest, ASurfaceCarriesWhereItIsAndNotInNotchesAndHoles) {
    const auto floor = [](const std::string& primitives, const std::string& tag = "mesh") {
        return geometry("g", "4 0 0  4 1 0  1 1 0  1 4 0  0 4 0  0 0 0   4 4 0  3 2 0  3 3 0  2 3 0  2 2 0", primitives,
                        tag);
    };
    const std::string angle = floor(faces("polygons", "<p>0 1 2 3 4 5</p>"));
    const std::string reverse = floor(faces("polylist", "<vcount>6</vcount><p>5 4 3 2 1 0</p>"));
    const std::string window = floor(faces("polygons", "<ph><p>5 0 6 4</p><h>7 8 9 10</h></ph>"));
    // The way from the second hole, which comes first, to the nearest corner leads over the other one.
    const std::string windows =
        geometry("g", "0 0 0  20 0 0  20 4 0  0 4 0   1 0.3 0  1 3.7 0  2 3.7 0  2 0.3 0   4 1 0  5 1 0  5 3 0  4 3 0",
                 faces("polygons", "<ph><p>0 1 2 3</p><h>8 9 10 11</h><h>4 5 6 7</h><h/></ph>"));
    const auto gutter = [](const std::string& tag) {
        return geometry("g", "-1 -5 2  0 -5 0  1 -5 2  -1 5 2  0 5 0  1 5 2",
                        faces("triangles", "<p>0 1 4 0 4 3 1 2 5 1 5 4</p>"), tag);
    };
    const std::tuple<std::string, std::string, double> cases[] = {
        {angle, "0.5 0.5", 0.2},
        {angle, "3.5 0.5", 0.2},
        {angle, "0.5 3.5", 0.2},
        {angle, "2 2", -19.6},
        {angle, "1.5 1.5", -19.6},
        {reverse, "3.5 0.5", 0.2},
        {reverse, "2 2", -19.6},
        {window, "0.5 0.5", 0.2},
        {window, "3.5 3.5", 0.2},
        {window, "1.4 2.6", 0.2},
        {window, "2.5 1.4", 0.2},
        {window, "2.5 2.5", -19.6},
        {windows, "3 2", 0.2},
        {windows, "1.5 2", -19.6},
        {windows, "4.5 2", -19.6},
        // The slope of the sides is 2, and over their hull there is nothing to fall into.
        {gutter("mesh"), "0 0", 0.2 * std::sqrt(5.0)},
        {gutter("convex_mesh"), "0 0", 2.2},
    };
    for (const auto& [geometries, place, height] : cases) {
        ColladaScene scene;
        scene.geometries = geometries;
        scene.add("floor", "", fixed + mesh("g"));
        const std::string z = std::to_string(std::max(height, 0.2) + 0.3);
        LoadedWorld loaded(scene.add("ball", "<translate>" + place + " " + z + "</translate>", ball(0.2)));
        loaded.run(120);
        EXPECT_NEAR(loaded.at("ball", 2), height, height < 0 ? 2 : 0.02) << place;
    }
}

TEST(Rest, StacksStandAndSleep) {
    // Towers of bricks, one or nine to a layer, which touch.
    for (const auto& [size, wide] : {std::pair(0.1, 1), {1.0, 1}, {20.0, 1}, {1.0, 3}, {0.3, 3}}) {
        SCOPED_TRACE(std::to_string(wide) + " wide, of " + std::to_string(size));
        ColladaScene scene("0 0 -9.81");
        scene.add("ground", "", ground);
        const std::string half = std::to_string(size / 2);
        std::vector<std::array<double, 3>> places;
        for (int i = 0; i < 10 * wide * wide; ++i) {
            places.push_back({size * (i % wide), size * (i / wide % wide), size * (i / (wide * wide) + 0.5)});
            scene.add("brick" + std::to_string(i), translate(places.back()[0], places.back()[1], places.back()[2]),
                      "<mass>2</mass>" + box(half + " " + half + " " + half));
        }
        LoadedWorld loaded(scene);
        loaded.run(600);
        for (std::size_t i = 0; i < places.size(); ++i) {
            DynamicsBody& brick = *loaded.bodies.at(1 + i);
            const Pose pose = LoadedWorld::poseOf(brick);
            for (unsigned axis = 0; axis < 3; ++axis) {
                EXPECT_NEAR(pose(axis, 3), places[i][axis], 0.02 * size) << brick.getName();
            }
            EXPECT_FALSE(brick.isActive()) << brick.getName();
        }
    }
}

} // namespace tessarin::dynamics::bullet
