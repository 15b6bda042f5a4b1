// What is wrong in a file costs that and nothing else, and is said in one line.

#include <tests/bullet/JointScene.h>
#include <tests/doubles/LogCapture.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <tuple>

namespace tessarin::dynamics::bullet {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

} // namespace

TEST(Failures, AFileWithoutPhysicsHarmsNothing) {
    doubles::LogCapture log("dynamics");
    doubles::LogCapture xmlLog("xml");
    const ColladaScene good = ColladaScene().add("ball", "", ball());
    const std::string whole = good.text();
    LoadedWorld loaded(good);
    for (const std::string& text :
         {std::string(), std::string("no XML"), whole.substr(0, whole.size() / 2), std::string("<html/>")}) {
        loaded.load(text);
        EXPECT_THAT(log.takeErrors(), ElementsAre(HasSubstr(".dae"))) << text;
    }
    loaded.world->loadScene("/nowhere/there.dae", Pose(), loaded);
    EXPECT_THAT(log.takeErrors(), ElementsAre(HasSubstr("/nowhere/there.dae")));
    for (const char* text : {"<COLLADA/>", "<c:COLLADA xmlns:c='u'><c:scene/></c:COLLADA>"}) {
        loaded.load(text);
        EXPECT_THAT(log.takeErrors(), IsEmpty()) << text;
    }
    EXPECT_EQ(loaded.bodies.size(), 1U);
    EXPECT_EQ(loaded.world->getGravity()[2], -10);
}

TEST(Failures, OneLineForEachBodyAndTheRestComesIn) {
    const std::tuple<std::string, const char*, bool> faults[] = {
        {"", "no shape", false},
        {shape("<torus/>"), "torus", false},
        {box("1 0 1"), "thickness can't move", false},
        {box("1 -1 1"), "half_extents", false},
        {fixed + box("0 0 0"), "half_extents", false},
        {box("0 2 0", "<translate>0 5 0</translate>") + ball(), "thickness", true},
        {box("1 NaN 1"), "half_extents", false},
        {ball(-1), "radius", false},
        {ball(1e30), "radius", false},
        {shape("<capsule><radius>1 1 1</radius><height>1</height></capsule>"), "radius", false},
        {shape("<plane><equation>0 0 0 1</equation></plane>"), "equation", false},
        {shape("<plane><equation>0 0 1 0</equation></plane>"), "can't move", false},
        {mesh("missing"), "geometry", false},
        {mesh("empty"), "vertices", false},
        {shape("<convex_mesh convex_hull_of='#round'/>"), "vertices", false},
        {mesh("flat"), "flat", true},
        {mesh("broken"), "vertices", true},
        {"<mass>0</mass>" + ball(), "mass", true},
        {"<mass>-3</mass>" + ball(), "mass", true},
        {"<mass>INF</mass>" + ball(), "sid=\"faulty\"> <technique_common>: <mass>", true},
        {"<mass>1,5</mass>" + ball(), "mass", true},
        {"<inertia>0 0 0</inertia>" + ball(), "<inertia>", true},
        {ball(1, "<density>0</density>"), "density", true},
        {ball(1, "<mass>much</mass>"), "sid=\"faulty\"> <mass>", true},
        {ball() + shape("<torus/>"), "torus", true},
        {ball(1, "<translate>1e30 0 0</translate>"), "out of range", false},
        {"<mass_frame><translate>1e30 0 0</translate></mass_frame>" + ball(), "<mass_frame>", true},
        {"<dynamic>yes</dynamic>" + ball(), "<dynamic>: is neither true nor false", true},
        {mesh("nothing"), "has no mesh", false},
    };
    doubles::LogCapture log("dynamics");
    for (const auto& [properties, message, hasBody] : faults) {
        SCOPED_TRACE(properties);
        ColladaScene scene;
        scene.geometries =
            "<geometry id='empty'><spline/></geometry><geometry id='round'><convex_mesh convex_hull_of='#round'/>"
            "</geometry>" +
            geometry("flat", "0 0 0 1 0 0 0 1 0 1 1 0", faces("triangles", "<p>0 1 2 2 1 3</p>")) +
            geometry("nothing", "0 0 0 1 0 0 0 1 x", faces("triangles", "<p>0 1 2</p>")) +
            geometry("broken", "0 0 0 1 0 0 0 1 0 0 0 1", faces("triangles", "<p>0 1 2 0 1 3 0 2 3 1 2 3 0 -1 7</p>"));
        scene.add("first", "", ball()).add("faulty", "<translate>9 0 0</translate>", properties);
        scene.add("last", "<translate>-9 0 0</translate>", ball());
        LoadedWorld loaded(scene);
        EXPECT_EQ(loaded.bodies.size(), hasBody ? 3U : 2U);
        const std::vector<std::string> lines = log.takeErrors();
        ASSERT_FALSE(lines.empty());
        EXPECT_THAT(lines[0], AllOf(HasSubstr(".dae"), HasSubstr(message)));
        EXPECT_LE(lines.size(), hasBody ? 1U : 2U);
        loaded.run(60);
        EXPECT_TRUE(loaded.areNumbers());
        for (const std::string& name : loaded.names()) {
            EXPECT_LT(loaded.at(name, 2), -1) << name << " doesn't fall";
        }
    }
}

TEST(Failures, BrokenReferencesCostWhatTheyName) {
    const char* const cases[][3] = {
        {"target='#faulty'", "target='#nobody'", "no node '#nobody'"},
        {"target='#faulty'", "", "names no target"},
        {"body='faulty'", "body='nobody'", "no such rigid body"},
        {"instance_physics_model url='#model'", "instance_physics_model url='#faulty'", "no such physics model"},
        {"instance_physics_scene url='#p'", "instance_physics_scene url='#faulty'", "no such physics scene"},
        {"<velocity>", "<velocity>fast ", "target=\"#faulty\"> <velocity>"},
    };
    doubles::LogCapture log("dynamics");
    for (const auto& [from, to, message] : cases) {
        ColladaScene scene = ColladaScene().add("good", "", ball());
        std::string text = scene.add("faulty", "", ball(), "<velocity>0 0 0</velocity>").text();
        LoadedWorld().load(text.replace(text.find(from), std::string(from).size(), to));
        EXPECT_THAT(log.takeErrors(), ElementsAre(AllOf(HasSubstr(".dae"), HasSubstr(message))));
    }
}

TEST(Failures, WhatOpenSceneGraphTurnsUpsideDownAndAnimationsWithoutEffectAreSaid) {
    const auto animation = [](const std::vector<const char*>& targets) {
        std::string text = "<library_animations><animation>";
        for (const char* const target : targets) {
            text += "<animation><channel source='#s' target='" + std::string(target) + "'/></animation>";
        }
        return text + "</animation></library_animations>";
    };
    const std::tuple<std::string, std::vector<std::string>> cases[] = {
        {animation({"ball/place.X", "free/place.Z", "ball/child/place", "camera(0)(1)", "", "./x"}),
         {"<channel target=\"ball/place.X\">: its node goes where its body goes, the animation is left out"}},
        {animation(
             {"free/place", "model/ball/mass", "ball.body/technique_common/dynamic", "p/gravity(1)", "p.gravity"}),
         {"\"model/ball/mass\">: animations of physics have no effect, this one is left out, the first of 4"}},
        {animation({"ball", "sid/mass", "ball(0)"}), {"\"sid/mass\">", "\"ball\">: its node"}},
    };
    doubles::LogCapture log("dynamics");
    for (const auto& [animations, messages] : cases) {
        ColladaScene scene =
            ColladaScene().add("ball", "<translate sid='place'>0 0 0</translate><node sid='child'/>", ball());
        scene.nodes += "<node id='free'/>";
        scene.bodies += "<rigid_body id='ball.body' sid='sid'/>";
        scene.geometries = "</library_geometries>" + animations + "<library_geometries>";
        EXPECT_EQ(LoadedWorld(scene).bodies.size(), 1U);
        std::vector<testing::Matcher<std::string>> expected;
        for (const std::string& message : messages) {
            expected.push_back(AllOf(HasSubstr(".dae:"), HasSubstr(message)));
        }
        EXPECT_THAT(log.takeErrors(), testing::ElementsAreArray(expected));
        scene.upAxis = "<up_axis> X_UP </up_axis>";
        LoadedWorld turned(scene);
        EXPECT_THAT(log.takeErrors(), testing::Contains(HasSubstr("<up_axis>: OpenSceneGraph turns X_UP")));
    }
}

TEST(Failures, AFaultyConstraintCostsItsJointAlone) {
    const std::string sides = attachment("a") + refAttachment("b");
    const auto limits = [&](const std::string& ends) {
        return sides + "<technique_common><limits>" + ends + "</limits></technique_common>";
    };
    const std::tuple<std::string, std::string, bool> cases[] = {
        {"", "no rigid constraint 'nobody'", false},
        {attachment("nobody") + refAttachment("a"), "no rigid body 'nobody'", false},
        {attachment("faulty") + refAttachment("a"), "was left out", false},
        {"<attachment><translate>1 0 0</translate></attachment>", "attached to no body", false},
        {attachment("a") + refAttachment("a"), "to one body", false},
        {limits("<linear><min sid='low'>0 x 0</min></linear>"), "sid=\"bad\"> <min sid=\"low\">: needs three numbers",
         true},
        {sides + "<technique_common><spring><linear><stiffness>-1</stiffness></linear></spring></technique_common>",
         "sid=\"bad\"> <stiffness>", true},
        {attachment("a", "<translate>1e300 0 0</translate><scale>1e300 1 1</scale>") + refAttachment("b"),
         "out of range", false},
        // Limits beyond which nothing is; not a fault that anybody minds.
        {limits("<linear><min>INF 1e30 0</min><max>INF 1e30 0</max></linear>"), "", true},
        {limits("<swing_cone_and_twist><min>-INF 0 1e30</min><max>-INF 0 1e30</max></swing_cone_and_twist>"), "", true},
    };
    for (const auto& [constraint, message, hasJoint] : cases) {
        SCOPED_TRACE(constraint);
        ColladaScene scene;
        scene.add("a", "", ball()).add("b", "<translate>9 0 0</translate>", ball()).add("faulty", "", "");
        addConstraint(scene, "good", {refAttachment("a"), attachment("b")});
        scene.bodies += "<rigid_constraint sid='bad'>" + constraint + "</rigid_constraint>";
        const std::string named = constraint.empty() ? "nobody" : "bad";
        scene.instances += "<instance_rigid_constraint constraint='" + named + "'/>";
        doubles::LogCapture log("dynamics");
        LoadedWorld loaded(scene);
        loaded.run(30);
        std::vector<std::string> lines = log.takeErrors();
        ASSERT_EQ(lines.size(), message.empty() ? 1U : 2U) << lines.back(); // the body without shapes has one
        EXPECT_THAT(lines, testing::Contains(HasSubstr(message)));
        EXPECT_EQ(loaded.bodies.size(), 2U);
        EXPECT_EQ(loaded.joints.size(), hasJoint ? 2U : 1U);
        EXPECT_TRUE(loaded.areNumbers());
    }
}

TEST(Failures, AbsurdPlacesAndSpeedsStayNumbers) {
    ColladaScene scene;
    scene.add("far", "<translate>1e300 0 0</translate>", ball())
        .add("farther", "<translate>1e300 0 0</translate><scale>1e300 1e300 1e300</scale>", ball())
        .add("nowhere", "<translate>NaN 0 0</translate>", ball())
        .add("nothing", "<scale>0 0 0</scale>", ball())
        .add("disc", "<scale>1 1 0</scale>", box("1 1 1"))
        .add("fast", "", ball(), "<velocity>1e38 1e38 1e38</velocity><angular_velocity>1e38 0 0</angular_velocity>")
        .add("farShape", "", fixed + ball(1, "<translate>1e300 0 0</translate>"))
        .add("farPlane", "", fixed + shape("<plane><equation>0 0 1 1e300</equation></plane>"))
        .add("good", "<translate>50 0 0</translate>", ball());
    scene.nodes += "<node id='loop'><node id='inner'><instance_node url='#loop'/></node></node>";
    LoadedWorld loaded(scene);
    loaded.run(60);
    EXPECT_TRUE(loaded.areNumbers());
    EXPECT_NEAR(loaded.at("good", 2), -5, 0.1);
}

TEST(Failures, ModelsThatAreNestedWithoutEndEndWithALine) {
    ColladaScene scene;
    scene.bodies = "<instance_physics_model url='#m0'/>";
    for (int i = 0; i < 3000; ++i) {
        scene.models += "<physics_model id='m" + std::to_string(i) + "'><instance_physics_model url='#m" +
                        std::to_string(i + 1) + "'/></physics_model>";
    }
    scene.add("good", "", ball());
    doubles::LogCapture log("dynamics");
    EXPECT_EQ(LoadedWorld(scene).bodies.size(), 1U);
    EXPECT_THAT(log.takeErrors(), ElementsAre(HasSubstr("too deeply")));
}

TEST(Failures, AFileThatWouldBecomeTooMuchEndsWithOneLineAndNothingOfItComesIn) {
    ColladaScene scene;
    scene.geometries = geometry("tent", "0 0 0 1 0 0 0 1 0 0 0 1", faces("triangles", "<p>0 1 2 0 3 1</p>"));
    scene.add("a", "", ball()).add("b", "<translate>9 0 0</translate>", ball() + ball(2)).add("c", "", mesh("tent"));
    addConstraint(scene, "joint", {refAttachment("a"), attachment("b")});
    const std::string text = scene.text();
    const std::tuple<double LoadLimits::*, double, const char*> enough[] = {
        {&LoadLimits::modelInstances, 1, "instances of physics models"},
        {&LoadLimits::bodies, 3, "bodies"},
        {&LoadLimits::joints, 1, "joints"},
        {&LoadLimits::shapes, 4, "shapes"},
        {&LoadLimits::triangles, 6, "triangles"},
        {&LoadLimits::meetings, 1, "pairs of bodies that meet"}};
    doubles::LogCapture log("dynamics");
    const auto expectNothing = [&](const std::string& file, const LoadLimits& limits, const char* message) {
        LoadedWorld loaded;
        loaded.world->setLoadLimits(limits);
        log.take();
        loaded.load(file);
        EXPECT_THAT(log.takeErrors(), ElementsAre(AllOf(HasSubstr(".dae"), HasSubstr(message))));
        EXPECT_TRUE(loaded.bodies.empty() && loaded.joints.empty() && loaded.world->getGravity()[2] == 0);
    };
    for (const auto& [member, count, message] : enough) {
        SCOPED_TRACE(message);
        LoadLimits limits;
        limits.*member = count;
        LoadedWorld loaded;
        loaded.world->setLoadLimits(limits);
        loaded.load(text);
        EXPECT_TRUE(loaded.bodies.size() == 3 && loaded.joints.size() == 1);
        limits.*member = count - 1;
        expectNothing(text, limits, message);
    }

    // Ten by ten, nine levels deep; bodies by the thousand in each of a thousand instances.
    const auto manyOf = [](const std::string& part, int count) {
        std::string all;
        for (int i = 0; i < count; ++i) {
            all += part;
        }
        return all;
    };
    ColladaScene wide, deep;
    wide.add("ball", "", ball());
    wide.bodies += manyOf("<instance_physics_model url='#m0'/>", 1000);
    wide.models = "<physics_model id='m0'><instance_physics_model url='#model'>" +
                  manyOf("<instance_rigid_body body='ball' target='#ball'/>", 1000) +
                  "</instance_physics_model></physics_model>";
    deep.bodies = "<instance_physics_model url='#m0'/>";
    for (int i = 0; i < 9; ++i) {
        deep.models += "<physics_model id='m" + std::to_string(i) + "'>" +
                       manyOf("<instance_physics_model url='#m" + std::to_string(i + 1) + "'/>", 10) +
                       "</physics_model>";
    }
    expectNothing(deep.text(), LoadLimits(), "1111111112 instances of physics models");
    expectNothing(wide.text(), LoadLimits(), "1000001 bodies");
}

TEST(Failures, APathThatLeadsToNoRegularFileIsNotWaitedFor) {
    const ScratchFile file("");
    std::filesystem::remove(file.path);
    ASSERT_EQ(::mkfifo(file.path.c_str(), 0600), 0);
    doubles::LogCapture log("dynamics");
    LoadedWorld loaded;
    loaded.world->loadScene(file.path, Pose(), loaded);
    EXPECT_THAT(log.takeErrors(), ElementsAre(AllOf(HasSubstr(file.path), HasSubstr("no regular file"))));
}

TEST(Failures, AMovingConcaveMeshSaysThatItsHullIsTaken) {
    doubles::LogCapture log("dynamics");
    ColladaScene scene;
    scene.geometries =
        boxGeometry("cube", "1", "triangles") +
        geometry("angle", "0 0 0  4 0 0  4 1 0  1 1 0  1 4 0  0 4 0  0 0 1  4 0 1  4 1 1  1 1 1  1 4 1  0 4 1",
                 faces("polylist", "<vcount>6 6 4 4 4 4 4 4</vcount><p>0 5 4 3 2 1  9 10 11 6 7 8"
                                   "  0 1 7 6  1 2 8 7  2 3 9 8  3 4 10 9  4 5 11 10  5 0 6 11</p>"));
    for (const std::string dynamic : {"1", "0"}) {
        for (const std::string name : {"angle", "cube"}) {
            scene.add(name + dynamic, "", "<dynamic>" + dynamic + "</dynamic>" + mesh(name));
        }
    }
    EXPECT_EQ(LoadedWorld(scene).bodies.size(), 4U);
    EXPECT_THAT(log.take(), ElementsAre(AllOf(HasSubstr("600 "), HasSubstr("angle1"), HasSubstr("hull"))));
}

} // namespace tessarin::dynamics::bullet
