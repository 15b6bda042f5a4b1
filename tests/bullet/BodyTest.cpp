// What a host does with bodies: read, move, push, and ask whether they are active.

#include <tests/bullet/ColladaScene.h>

#include <dynamics/PoseReader.h>
#include <dynamics/bullet/BulletBodyControl.h>
#include <gmtl/Quat.h>
#include <gtest/gtest.h>

#include <limits>

namespace tessarin::dynamics::bullet {

namespace {

const double nan = std::numeric_limits<double>::quiet_NaN();
const double infinity = std::numeric_limits<double>::infinity();

/// The ground and some cubes on it.
ColladaScene stack(int count) {
    ColladaScene scene;
    scene.add("ground", "", ground);
    for (int i = 0; i < count; ++i) {
        scene.add("cube" + std::to_string(i), translate(0, 0, i + 0.5), box("0.5 0.5 0.5"));
    }
    return scene;
}

void sleep(LoadedWorld& loaded) {
    for (const std::string& name : loaded.names()) {
        loaded.pose(name);
    }
    loaded.run(600);
    for (const auto& each : loaded.bodies) {
        ASSERT_FALSE(each->isActive()) << each->getName();
    }
}

} // namespace

TEST(Body, IsActiveWhileAwakeAndUntilItsPoseIsTakenOver) {
    LoadedWorld loaded(stack(2));
    DynamicsBody& floor = loaded.body("ground");
    EXPECT_TRUE(floor.isActive() && floor.isActive());
    loaded.pose("ground");
    EXPECT_FALSE(floor.isActive());
    loaded.pose("cube0");
    EXPECT_TRUE(loaded.body("cube0").isActive());

    // Who follows a body gets its last pose however many steps he leaves out, whatever others read.
    LoadedWorld drifting(ColladaScene("0 0 0").add("it", "", ball(), "<velocity>0.0001 0 0</velocity>"));
    PoseReader reader;
    reader.follow(dynamic_cast<PoseSource*>(&drifting.body("it")));
    double last = 0;
    for (int steps = 1; drifting.body("it").isActive(); steps *= 2) {
        last = drifting.at("it", 0);
        reader.confirm();
        drifting.run(steps);
        EXPECT_EQ(drifting.at("it", 0) != last, drifting.body("it").isActive()) << steps;
    }
    EXPECT_EQ(last, drifting.at("it", 0));
    sleep(loaded);
    for (const char* name : {"ground", "cube1"}) {
        loaded.body(name).setPosition({0, 0, 0});
        EXPECT_TRUE(loaded.body(name).isActive()) << name;
        loaded.pose(name);
    }
    EXPECT_FALSE(floor.isActive());
}

TEST(Body, GoesWhereItIsPutAtOnceAndStaysThere) {
    ColladaScene scene("0 0 0");
    // The centre of mass is far from the node's origin, which is what poses are of.
    scene.add("body", "<translate>1 2 3</translate><rotate>0 0 1 90</rotate>",
              box("1 2 3", translate(5, 6, 7)) + ball(1, translate(-2, 0, 0)));
    LoadedWorld loaded(scene);
    DynamicsBody& body = loaded.body("body");
    const auto expectAt = [&](double x, double y, double z, double cosine) {
        for (int i = 0; i < 2; ++i) {
            const Pose pose = loaded.pose("body");
            EXPECT_LT(std::hypot(pose(0, 3) - x, pose(1, 3) - y, pose(2, 3) - z), 1e-5);
            EXPECT_NEAR(pose(0, 0), cosine, 1e-5);
            loaded.run(10);
        }
    };
    expectAt(1, 2, 3, 0);
    body.setPosition({-4, 5, 6});
    expectAt(-4, 5, 6, 0);
    body.setRotation(gmtl::Quat<double>(2, 0, 0, 2)); // needn't have unit length
    expectAt(-4, 5, 6, 1);
    EXPECT_NEAR(loaded.pose("body")(2, 1), 1, 1e-6);
    Pose scaled;
    scaled.set(0, -2, 0, 7, 2, 0, 0, 8, 0, 0, 2, 9, 0, 0, 0, 1);
    body.setMatrix(scaled);
    expectAt(7, 8, 9, 0);
    EXPECT_NEAR(loaded.pose("body")(1, 0), 1, 1e-6);

    body.setPosition({nan, 0, 0});
    body.setRotation(gmtl::Quat<double>(0, 0, 0, 0));
    body.setLinearVelocity({std::numeric_limits<float>::infinity(), 0, 0});
    scaled.set(nan, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    body.setMatrix(scaled);
    expectAt(7, 8, 9, 0);
}

TEST(Body, OutsideWritesWakeWhatRestedThere) {
    using Write = void (*)(LoadedWorld&, DynamicsBody & lowest);
    const Write writes[] = {
        [](LoadedWorld&, DynamicsBody& b) { b.setPosition(gmtl::Vec<double, 3>(10, 0, 0.5)); },
        [](LoadedWorld& w, DynamicsBody&) { w.body("ground").setPosition(gmtl::Vec<double, 3>(0, 0, -5)); },
        [](LoadedWorld& w, DynamicsBody&) { w.bodies.erase(w.bodies.begin()); }, // the ground
        [](LoadedWorld& w, DynamicsBody&) { w.bodies.erase(w.bodies.begin() + 1); },
        [](LoadedWorld& w, DynamicsBody&) { w.world->setGravity(gmtl::Vec<double, 3>(0, 0, 5)); },
        [](LoadedWorld&, DynamicsBody& b) { b.setLinearVelocity(gmtl::Vec<float, 3>(20, 0, 0)); },
    };
    for (const Write& write : writes) {
        LoadedWorld loaded(stack(3));
        sleep(loaded);
        const double before = loaded.at("cube2", 2);
        write(loaded, loaded.body("cube0"));
        loaded.run(30);
        EXPECT_GT(std::abs(loaded.at("cube2", 2) - before), 0.1) << &write - writes;
    }
}

TEST(Body, VelocitiesAndBlowsMoveItAsMechanicsSays) {
    ColladaScene scene("0 0 0");
    scene.add("bar", "<translate>9 0 9</translate>", "<mass>2</mass>" + box("1 0.5 0.5"));
    scene.add("wall", "", fixed + box("1 1 1"));
    scene.add("slanted", "<translate>0 9 0</translate>",
              "<mass>3</mass>" + box("1 0.2 0.2", "<rotate>0 0 1 45</rotate>"));
    LoadedWorld loaded(scene);
    const auto control = [&](const char* name) { return dynamic_cast<BulletBodyControl*>(&loaded.body(name)); };
    BulletBodyControl& bar = *control("bar");
    loaded.body("bar").setLinearVelocity({1.0F, 2.0F, 3.0F});
    loaded.body("bar").setAngularVelocity({0.0F, 0.0F, 1.5707963F});
    loaded.body("wall").setLinearVelocity({1.0F, 2.0F, 3.0F});
    loaded.run(60);
    EXPECT_NEAR(loaded.at("bar", 2), 12, 1e-4);
    EXPECT_NEAR(loaded.pose("bar")(1, 0), 1, 1e-4);
    EXPECT_EQ(loaded.at("wall", 0), 0);
    loaded.body("bar").setLinearVelocity({0.0F, 0.0F, 0.0F});
    loaded.body("bar").setAngularVelocity({0.0F, 0.0F, 0.0F});
    loaded.run(600);
    EXPECT_NEAR(loaded.at("bar", 2), 12, 1e-4);

    const gmtl::Vec<double, 3> centre = bar.getCentreOfMass();
    bar.applyImpulse({0, 0, 6}, {centre[0], centre[1] + 1, centre[2]}); // it lies along Y now
    EXPECT_NEAR(bar.getLinearVelocity()[2], 3, 1e-5);
    EXPECT_NEAR(bar.getAngularVelocity()[0], 6 / (2 * (4 + 1) / 12.0), 1e-3);
    bar.applyAngularImpulse({-6, 0, 0});
    EXPECT_NEAR(bar.getAngularVelocity()[0], 0, 1e-3);
    loaded.run(60);
    EXPECT_NEAR(loaded.at("bar", 2), 15, 0.1) << "it wakes";

    // Along its length it is lighter to turn, with 0.08, than across, with 1.04.
    control("slanted")->applyAngularImpulse({1, 0, 0});
    EXPECT_NEAR(control("slanted")->getAngularVelocity()[1], 0.5 / 0.08 - 0.5 / 1.04, 0.02);

    const double before = bar.getLinearVelocity()[2];
    bar.applyImpulse({0, 0, infinity}, {9, 0, 9});
    bar.applyImpulse({0, 0, 1}, {infinity, 0, 0});
    bar.applyAngularImpulse({infinity, 0, 0});
    control("wall")->applyImpulse({0, 0, 1}, {0, 0, 0});
    EXPECT_EQ(bar.getLinearVelocity()[2], before);
    EXPECT_EQ(control("wall")->getLinearVelocity()[2], 0);
    EXPECT_TRUE(bar.isMovable() && !control("wall")->isMovable());
    EXPECT_EQ(bar.getMass(), 2);
}

TEST(Body, AFastOneDoesNotPassThroughASurface) {
    ColladaScene scene("0 0 0");
    scene.geometries = geometry("g", "5 -9 -9 5 9 -9 5 9 9 5 -9 9", faces("polygons", "<p>0 1 2 3</p>"));
    scene.add("wall", "", fixed + mesh("g")).add("bullet", "", ball(0.05), "<velocity>150 0 0</velocity>");
    LoadedWorld loaded(scene);
    loaded.run(60);
    EXPECT_LT(loaded.at("bullet", 0), 5);
}

} // namespace tessarin::dynamics::bullet
