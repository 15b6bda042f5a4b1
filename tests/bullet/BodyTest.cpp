// What a host does with bodies: read, move, ask whether they are active, and delete them in any order.

#include <tests/bullet/ColladaScene.h>

#include <dynamics/bullet/BulletBodyControl.h>
#include <gmtl/Quat.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace tessarin::dynamics::bullet {

namespace {

const std::string cube = "<shape><box><half_extents>0.5 0.5 0.5</half_extents></box></shape>";

ColladaScene stack(int count) {
    ColladaScene scene;
    scene.addGround();
    for (int i = 0; i < count; ++i) {
        scene.add("cube" + std::to_string(i), "<translate>0 0 " + std::to_string(i + 0.5) + "</translate>", cube);
    }
    return scene;
}

void sleep(LoadedWorld& loaded) {
    for (const auto& each : loaded.bodies) {
        Pose pose;
        each->getMatrix(pose);
    }
    loaded.run(600);
    for (const auto& each : loaded.bodies) {
        ASSERT_FALSE(each->isActive()) << each->getName();
    }
}

} // namespace

TEST(Body, IsActiveUntilReadOnceAndWhileAwake) {
    LoadedWorld loaded(stack(2));
    DynamicsBody& ground = loaded.body("ground");
    EXPECT_TRUE(ground.isActive());
    EXPECT_TRUE(ground.isActive());
    loaded.pose("ground");
    EXPECT_FALSE(ground.isActive());
    EXPECT_TRUE(loaded.body("cube0").isActive());
    loaded.pose("cube0");
    EXPECT_TRUE(loaded.body("cube0").isActive());
    loaded.run(5);
    EXPECT_FALSE(ground.isActive());

    sleep(loaded);
    loaded.run(60);
    EXPECT_FALSE(loaded.body("cube1").isActive());
    for (const char* name : {"ground", "cube1"}) {
        loaded.body(name).setPosition({0, 0, 0});
        EXPECT_TRUE(loaded.body(name).isActive()) << name;
    }
    loaded.pose("ground");
    EXPECT_FALSE(ground.isActive());
}

TEST(Body, GoesWhereItIsPutAtOnceAndStaysThere) {
    ColladaScene scene;
    scene.gravity = "0 0 0";
    // The centre of mass is far from the node's origin, which is what poses are of.
    scene.add("body", "<translate>1 2 3</translate><rotate>0 0 1 90</rotate>",
              "<shape><box><half_extents>1 2 3</half_extents></box><translate>5 6 7</translate></shape>"
              "<shape><sphere><radius>1</radius></sphere><translate>-2 0 0</translate></shape>");
    LoadedWorld loaded(scene);
    DynamicsBody& body = loaded.body("body");
    const auto expectAt = [&](double x, double y, double z, double cosine) {
        for (int i = 0; i < 2; ++i) {
            const Pose pose = loaded.pose("body");
            EXPECT_NEAR(pose(0, 3), x, 1e-5);
            EXPECT_NEAR(pose(1, 3), y, 1e-5);
            EXPECT_NEAR(pose(2, 3), z, 1e-5);
            EXPECT_NEAR(pose(0, 0), cosine, 1e-6);
            loaded.run(10);
        }
    };
    expectAt(1, 2, 3, 0);
    body.setPosition({-4, 5, 6});
    expectAt(-4, 5, 6, 0);
    const double half = std::sqrt(0.5);
    body.setRotation(gmtl::Quat<double>(2 * half, 0, 0, 2 * half)); // needn't have unit length
    expectAt(-4, 5, 6, 1);
    EXPECT_NEAR(loaded.pose("body")(2, 1), 1, 1e-6);
    Pose scaled;
    scaled.set(0, -2, 0, 7, 2, 0, 0, 8, 0, 0, 2, 9, 0, 0, 0, 1);
    body.setMatrix(scaled);
    expectAt(7, 8, 9, 0);
    EXPECT_NEAR(loaded.pose("body")(1, 0), 1, 1e-6);

    const double nan = std::numeric_limits<double>::quiet_NaN();
    body.setPosition({nan, 0, 0});
    body.setRotation(gmtl::Quat<double>(0, 0, 0, 0));
    body.setLinearVelocity({std::numeric_limits<float>::infinity(), 0, 0});
    scaled.set(nan, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    body.setMatrix(scaled);
    expectAt(7, 8, 9, 0);
}

TEST(Body, OutsideWritesWakeWhatRestedThere) {
    using Write = void (*)(LoadedWorld&);
    const Write writes[] = {
        [](LoadedWorld& w) {
            w.body("cube0").setPosition({10, 0, 0.5});
        },
        [](LoadedWorld& w) {
            w.body("ground").setPosition({0, 0, -5});
        },
        [](LoadedWorld& w) { w.bodies.erase(w.bodies.begin()); }, // the ground
        [](LoadedWorld& w) { w.bodies.erase(w.bodies.begin() + 1); },
        [](LoadedWorld& w) {
            w.world->setGravity({0, 0, 5});
        },
        [](LoadedWorld& w) {
            w.body("cube0").setLinearVelocity({20, 0, 0});
        },
    };
    for (const Write& write : writes) {
        LoadedWorld loaded(stack(3));
        sleep(loaded);
        const double before = loaded.at("cube2", 2);
        write(loaded);
        loaded.run(30);
        EXPECT_GT(std::abs(loaded.at("cube2", 2) - before), 0.1) << &write - writes;
    }
}

TEST(Body, VelocitiesAreTakenAtOnce) {
    ColladaScene scene;
    scene.gravity = "0 0 0";
    scene.add("body", "", cube).add("wall", "<translate>0 9 0</translate>", "<dynamic>0</dynamic>" + cube);
    LoadedWorld loaded(scene);
    loaded.body("body").setLinearVelocity({1, 2, 3});
    loaded.body("body").setAngularVelocity({0, 0, 1.5707963F});
    loaded.body("wall").setLinearVelocity({1, 2, 3});
    loaded.run(60);
    EXPECT_NEAR(loaded.at("body", 0), 1, 1e-4);
    EXPECT_NEAR(loaded.at("body", 2), 3, 1e-4);
    EXPECT_NEAR(loaded.pose("body")(1, 0), 1, 1e-4);
    EXPECT_EQ(loaded.at("wall", 0), 0);
    loaded.body("body").setLinearVelocity({0, 0, 0});
    loaded.body("body").setAngularVelocity({0, 0, 0});
    loaded.run(60);
    EXPECT_NEAR(loaded.at("body", 0), 1, 1e-4);
}

TEST(Body, MayBeDeletedInAnyOrderBeforeAndAfterTheWorld) {
    std::mt19937 random(7);
    for (int round = 0; round < 10; ++round) {
        LoadedWorld loaded(stack(12));
        loaded.run(20);
        std::shuffle(loaded.bodies.begin(), loaded.bodies.end(), random);
        for (int i = 0; i < round; ++i) {
            loaded.bodies.pop_back();
            loaded.run(1);
        }
        loaded.world.reset();
        // Without its world a body still answers.
        loaded.bodies.front()->setPosition({1, 2, 3});
        EXPECT_TRUE(loaded.bodies.front()->isActive());
        EXPECT_EQ(loaded.at(loaded.bodies.front()->getName(), 2), 3);
    }
}

TEST(Body, AFastOneDoesNotPassThroughASurface) {
    ColladaScene scene;
    scene.gravity = "0 0 0";
    scene.geometries = "<geometry id='g'><mesh><source id='s'><float_array id='a'>5 -9 -9 5 9 -9 5 9 9 5 -9 9"
                       "</float_array></source><vertices id='v'><input semantic='POSITION' source='#s'/></vertices>"
                       "<polygons><input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2 3</p></polygons></mesh>"
                       "</geometry>";
    scene.add("wall", "", "<dynamic>false</dynamic><shape><instance_geometry url='#g'/></shape>");
    scene.add("bullet", "", "<shape><sphere><radius>0.05</radius></sphere></shape>", "<velocity>150 0 0</velocity>");
    LoadedWorld loaded(scene);
    loaded.run(60);
    EXPECT_LT(loaded.at("bullet", 0), 5);
}

TEST(Body, BlowsChangeTheVelocitiesAsMechanicsSays) {
    ColladaScene scene = stack(1);
    scene.gravity = "0 0 0";
    scene.add("bar", "<translate>9 0 9</translate>",
              "<mass>2</mass><shape><box><half_extents>1 0.5 0.5</half_extents></box></shape>");
    LoadedWorld loaded(scene);
    const auto control = [&](const char* name) { return dynamic_cast<BulletBodyControl*>(&loaded.body(name)); };
    BulletBodyControl& bar = *control("bar");
    loaded.run(600);

    bar.applyImpulse({0, 0, 6}, {10, 0, 9});
    EXPECT_NEAR(3, bar.getLinearVelocity()[2], 1e-5);
    const double momentOfInertia = 2 * (4 + 1) / 12.0;
    EXPECT_NEAR(-6 / momentOfInertia, bar.getAngularVelocity()[1], 1e-4);
    bar.applyAngularImpulse({0, 6, 0});
    EXPECT_NEAR(0, bar.getAngularVelocity()[1], 1e-4);
    loaded.run(60);
    EXPECT_NEAR(12, bar.getCentreOfMass()[2], 0.1) << "it wakes";

    const double infinite = std::numeric_limits<double>::infinity();
    const double before = bar.getLinearVelocity()[2];
    bar.applyImpulse({0, 0, infinite}, {9, 0, 9});
    bar.applyImpulse({0, 0, 1}, {infinite, 0, 0});
    bar.applyAngularImpulse({infinite, 0, 0});
    control("ground")->applyImpulse({0, 0, 1}, {0, 0, 0});
    EXPECT_EQ(before, bar.getLinearVelocity()[2]);
    EXPECT_EQ(0, control("ground")->getLinearVelocity()[2]);
    EXPECT_FALSE(control("ground")->isMovable());
    EXPECT_TRUE(bar.isMovable());
    EXPECT_EQ(2, bar.getMass());
}

} // namespace tessarin::dynamics::bullet
