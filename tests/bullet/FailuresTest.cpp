// What is wrong in a file costs that and nothing else, and is said in one line.

#include <tests/bullet/ColladaScene.h>
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

std::string withShape(const std::string& geometry) {
    return "<shape>" + geometry + "</shape>";
}

struct Fault {
    std::string properties;
    const char* message;
    bool hasBody;
};

} // namespace

TEST(Failures, AFileWithoutPhysicsHarmsNothing) {
    doubles::LogCapture log("dynamics");
    doubles::LogCapture xmlLog("xml");
    const ColladaScene good = ColladaScene().add("ball", "", ball);
    const std::string whole = good.text();
    LoadedWorld loaded(good);
    for (const std::string& text :
         {std::string(), std::string("no XML"), whole.substr(0, whole.size() / 2), std::string("<html/>")}) {
        const ScratchFile file(text);
        loaded.world->loadScene(file.path, Pose(), loaded);
        EXPECT_THAT(log.takeErrors(), ElementsAre(HasSubstr(file.path))) << text;
    }
    loaded.world->loadScene("/nowhere/there.dae", Pose(), loaded);
    EXPECT_THAT(log.takeErrors(), ElementsAre(HasSubstr("/nowhere/there.dae")));

    // No fault at all.
    for (const char* text : {"<COLLADA/>", "<c:COLLADA xmlns:c='u'><c:scene/></c:COLLADA>"}) {
        const ScratchFile file(text);
        loaded.world->loadScene(file.path, Pose(), loaded);
        EXPECT_THAT(log.takeErrors(), ElementsAre()) << text;
    }
    EXPECT_EQ(loaded.bodies.size(), 1U);
    EXPECT_EQ(loaded.world->getGravity()[2], -10);
}

TEST(Failures, OneLineForEachBodyAndTheRestComesIn) {
    const Fault faults[] = {
        {"", "no shape", false},
        {withShape("<torus/>"), "torus", false},
        {withShape("<box><half_extents>1 0 1</half_extents></box>"), "half_extents", false},
        {withShape("<box><half_extents>1 NaN 1</half_extents></box>"), "half_extents", false},
        {withShape("<sphere><radius>-1</radius></sphere>"), "radius", false},
        {withShape("<sphere><radius>1e30</radius></sphere>"), "radius", false},
        {withShape("<capsule><radius>1 1 1</radius><height>1</height></capsule>"), "radius", false},
        {withShape("<plane><equation>0 0 0 1</equation></plane>"), "equation", false},
        {withShape("<plane><equation>0 0 1 0</equation></plane>"), "can't move", false},
        {withShape("<instance_geometry url='#missing'/>"), "geometry", false},
        {withShape("<instance_geometry url='#empty'/>"), "vertices", false},
        {withShape("<convex_mesh convex_hull_of='#round'/>"), "vertices", false},
        {withShape("<instance_geometry url='#flat'/>"), "flat", true},
        {withShape("<instance_geometry url='#broken'/>"), "vertices", true},
        {"<mass>0</mass>" + ball, "mass", true},
        {"<mass>-3</mass>" + ball, "mass", true},
        {"<mass>INF</mass>" + ball, "mass", true},
        {"<shape><density>0</density><sphere><radius>1</radius></sphere></shape>", "density", true},
        {ball + withShape("<torus/>"), "torus", true},
    };
    doubles::LogCapture log("dynamics");
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.properties);
        ColladaScene scene;
        const auto mesh = [](const std::string& positions, const std::string& indices) {
            return "<mesh><source id='" + indices + "s'><float_array>" + positions +
                   "</float_array></source><vertices><input semantic='POSITION' source='#" + indices +
                   "s'/></vertices><triangles><input semantic='VERTEX' offset='0'/><p>" + indices +
                   "</p></triangles></mesh></geometry>";
        };
        scene.geometries = "<geometry id='empty'><spline/></geometry><geometry id='round'><convex_mesh "
                           "convex_hull_of='#round'/></geometry><geometry id='flat'>" +
                           mesh("0 0 0 1 0 0 0 1 0 1 1 0", "0 1 2 2 1 3") + "<geometry id='broken'>" +
                           mesh("0 0 0 1 0 0 0 1 0 0 0 1", "0 1 2 0 1 3 0 2 3 1 2 3 0 -1 7");
        scene.add("first", "", ball).add("faulty", "<translate>9 0 0</translate>", fault.properties);
        scene.add("last", "<translate>-9 0 0</translate>", ball);
        LoadedWorld loaded(scene);
        EXPECT_EQ(loaded.bodies.size(), fault.hasBody ? 3U : 2U);
        const std::vector<std::string> lines = log.takeErrors();
        ASSERT_FALSE(lines.empty());
        EXPECT_THAT(lines[0], AllOf(HasSubstr(".dae"), HasSubstr(fault.message)));
        EXPECT_LE(lines.size(), fault.hasBody ? 1U : 2U);
        loaded.run(60);
        for (const std::string& name : loaded.names()) {
            EXPECT_LT(loaded.at(name, 2), -1) << name << " doesn't fall";
            EXPECT_TRUE(std::isfinite(loaded.pose(name)(0, 0)));
        }
    }
}

TEST(Failures, BrokenReferencesCostWhatTheyName) {
    const struct {
        const char* from;
        const char* to;
        const char* message;
    } cases[] = {
        {"target='#faulty'", "target='#nobody'", "no node '#nobody'"},
        {"target='#faulty'", "", "names no target"},
        {"body='faulty'", "body='nobody'", "no such rigid body"},
        {"instance_physics_model url='#model'", "instance_physics_model url='#faulty'", "no such physics model"},
        {"instance_physics_scene url='#physics'", "instance_physics_scene url='#faulty'", "no such physics scene"},
    };
    doubles::LogCapture log("dynamics");
    for (const auto& each : cases) {
        std::string text = ColladaScene().add("good", "", ball).add("faulty", "", ball).text();
        text.replace(text.find(each.from), std::string(each.from).size(), each.to);
        const LoadedWorld loaded(text);
        const std::vector<std::string> lines = log.takeErrors();
        ASSERT_EQ(lines.size(), 1U) << each.to;
        EXPECT_THAT(lines[0], AllOf(HasSubstr(".dae"), HasSubstr(each.message)));
    }
}

TEST(Failures, AbsurdPlacesAndSpeedsStayNumbers) {
    ColladaScene scene;
    scene.add("far", "<translate>1e300 0 0</translate>", ball)
        .add("farther", "<translate>1e300 0 0</translate><scale>1e300 1e300 1e300</scale>", ball)
        .add("nowhere", "<translate>NaN 0 0</translate>", ball)
        .add("nothing", "<scale>0 0 0</scale>", ball)
        .add("disc", "<scale>1 1 0</scale>", "<shape><box><half_extents>1 1 1</half_extents></box></shape>")
        .add("fast", "", ball, "<velocity>1e38 1e38 1e38</velocity><angular_velocity>1e38 0 0</angular_velocity>")
        .add("good", "<translate>50 0 0</translate>", ball);
    LoadedWorld loaded(scene);
    loaded.run(60);
    for (const std::string& name : loaded.names()) {
        const Pose pose = loaded.pose(name);
        for (int i = 0; i < 16; ++i) {
            EXPECT_TRUE(std::isfinite(pose.getData()[i])) << name;
        }
    }
    EXPECT_NEAR(loaded.at("good", 2), -5, 0.1);
}

TEST(Failures, ModelsAndNodesThatContainThemselvesEnd) {
    ColladaScene scene;
    scene.add("ball", "", ball);
    scene.nodes += "<node id='loop'><node id='inner'><instance_node url='#loop'/></node></node>";
    scene.bodies += "<instance_physics_model url='#model'/>";
    const LoadedWorld loaded(scene);
    EXPECT_EQ(loaded.names(), std::vector<std::string>{"ball"});
}

TEST(Failures, AMovingConcaveMeshSaysThatItsHullIsTaken) {
    doubles::LogCapture log("dynamics");
    const std::string angle =
        "<geometry id='angle'><mesh><source id='s'><float_array>0 0 0  4 0 0  4 1 0  1 1 0  1 4 0  0 4 0"
        "  0 0 1  4 0 1  4 1 1  1 1 1  1 4 1  0 4 1</float_array></source><vertices>"
        "<input semantic='POSITION' source='#s'/></vertices><polylist><input semantic='VERTEX' "
        "offset='0'/><vcount>6 6 4 4 4 4 4 4</vcount><p>0 5 4 3 2 1  9 10 11 6 7 8  0 1 7 6"
        "  1 2 8 7  2 3 9 8  3 4 10 9  4 5 11 10  5 0 6 11</p></polylist></mesh></geometry>";
    ColladaScene scene;
    scene.geometries = angle + boxGeometry("cube", "1", "triangles");
    for (const char* dynamic : {"1", "0"}) {
        for (const char* geometry : {"angle", "cube"}) {
            scene.add(std::string(geometry) + dynamic, "",
                      std::string("<dynamic>") + dynamic + "</dynamic>" +
                          withShape(std::string("<instance_geometry url='#") + geometry + "'/>"));
        }
    }
    const LoadedWorld loaded(scene);
    EXPECT_EQ(loaded.bodies.size(), 4U);
    EXPECT_THAT(log.take(), ElementsAre(AllOf(HasSubstr("600 "), HasSubstr("angle1"), HasSubstr("hull"))));
}

} // namespace tessarin::dynamics::bullet
