#include <tests/agent/AgentTest.h>

#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SceneGraphModifierComponent.h>
#include <agent/VisualModelComponent.h>
#include <tests/doubles/ModelLoaderDouble.h>
#include <tests/doubles/PhysicsDoubles.h>

#include <osgDB/WriteFile>

#include <cstdio>
#include <sstream>

namespace tessarin::agent {
namespace {

using doubles::BodyDouble;
using Joint = doubles::JointDouble<dynamics::DynamicsRevoluteJoint>;

class VisualModel : public testing::Test {
protected:
    VisualModel() {
        AgentNode::dynamicsWorld = &world;
        world.scene = [](dynamics::DynamicsBodyFunctor& functor) {
            functor.visitBody(new BodyDouble("wheel"));
            functor.visitJoint(new Joint("hinge"));
            functor.visitBody(new BodyDouble("body"));
        };
    }
    ~VisualModel() override { AgentNode::dynamicsWorld = nullptr; }

    VisualModelComponent* load(const std::string& path) {
        auto* const component = new VisualModelComponent;
        component->setFilePath(path);
        node.addComponent(component);
        EXPECT_EQ(component->initialize(), component);
        return component;
    }

    LogCapture log;
    doubles::ModelLoaderDouble loader;
    doubles::WorldDouble world;
    AgentNode node{"node"};
};

TEST_F(VisualModel, HoldsTheModelAndSendsOnlyColladaFilesToTheWorld) {
    loader.models["a.osg"] = new osg::Node;
    VisualModelComponent* const component = load("a.osg");
    EXPECT_EQ(component->getModel(), loader.models["a.osg"]);
    EXPECT_EQ(node.getOsgTransform()->getNumChildren(), 0u) << "a store, not a part of the scene";
    std::ostringstream printed;
    component->printValues(printed);
    static_cast<Component*>(component)->printValues(printed); // the base's own, which writes nothing
    EXPECT_EQ(printed.str(), "filePath=a.osg,");
    component->setFilePath("missing.osg");
    EXPECT_EQ(component->initialize(), component);
    EXPECT_EQ(component->getModel(), nullptr);
    const std::string file = testing::TempDir() + "tessarin_model_test.osgt";
    ASSERT_TRUE(osgDB::writeNodeFile(*node.getOsgTransform(), file));
    EXPECT_NE(VisualModelComponentModelLoader().loadModel(file), nullptr);
    std::remove(file.c_str());
    EXPECT_EQ(VisualModelComponentModelLoader().loadModel(file), nullptr);
    for (const char* const path : {"a.daex", "dae", "a.dae.osg", ""})
        load(path);
    EXPECT_THAT(loader.paths, ElementsAre("a.osg", "missing.osg", "a.daex", "dae", "a.dae.osg", ""));
    EXPECT_THAT(world.paths, IsEmpty());
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(VisualModel, PhysicsBecomeChildrenAndJointComponents) {
    loader.models["car.DAE"] = new osg::Node;
    VisualModelComponent* const component = load("car.DAE");
    EXPECT_EQ(component->getModel(), loader.models["car.DAE"]);
    EXPECT_THAT(world.paths, ElementsAre("car.DAE"));
    EXPECT_TRUE(world.lastPlacement == BodyDouble::Matrix());
    EXPECT_EQ(childNames(node), "wheel body");
    for (AgentNode* const child : node.getChildren()) {
        EXPECT_THAT(componentsOf(*child), ElementsAre(child->getRigidBody()));
        EXPECT_EQ(child->getRigidBody()->getName(), "RigidBodyComponent");
        EXPECT_EQ(child->getRigidBody()->getBody()->getName(), child->getName());
    }
    EXPECT_EQ(node.getOsgTransform()->getNumChildren(), 2u);
    EXPECT_NE(dynamic_cast<JointComponent&>(*node.getComponent("hinge")).getRevoluteJoint(), nullptr);
    node.removeComponent(component);
    delete component;
    EXPECT_EQ(BodyDouble::alive, 2) << "they belong to the tree";
    node.getChild("wheel")->markForRemoval();
    node.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(BodyDouble::alive, 1);
    load("car.dae");
    EXPECT_EQ(childNames(node), "body wheel body");
}

TEST_F(VisualModel, WhatIsMissingIsLoggedAndSkipped) {
    loader.models["a.dae"] = new osg::Node;
    AgentNode::dynamicsWorld = nullptr;
    EXPECT_NE(load("a.dae")->getModel(), nullptr);
    VisualModelComponent::setModelLoader(nullptr);
    load("a.osg");
    EXPECT_THAT(log.takeErrors(), ElementsAre("No dynamics world is set to load the physics of a.dae",
                                              "No model loader is set to load a.osg"));
    AgentNode::dynamicsWorld = &world;
    VisualModelComponent::setModelLoader(&loader);
    VisualModelComponent alone; // on no agent
    alone.setFilePath("a.dae");
    alone.initialize();
    EXPECT_EQ(alone.getModel(), loader.models["a.dae"]);
    EXPECT_THAT(world.paths, IsEmpty());

    static SimObjectFactoryFor<RecordingComponent> replacing;
    static SimObjectFactoryRigidBodyComponent standard;
    SimObjectDB::instance()->registerFactory(&replacing, "RigidBodyComponent");
    load("a.dae");
    SimObjectDB::instance()->registerFactory(&standard, "RigidBodyComponent");
    EXPECT_NE(dynamic_cast<RecordingComponent*>(node.getChild("wheel")->getComponent("RigidBodyComponent")), nullptr);
    EXPECT_EQ(BodyDouble::alive, 0) << "a host's own class leaks no body";
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(SceneGraphModifierComponent, CarriesOutAdditionsThenRemovals) {
    AgentNode root, to("to");
    auto modifier = std::make_unique<SceneGraphModifierComponent>();
    root.addComponent(modifier.get());
    AgentNode* const moving = root.addChild("moving");
    const Owned out(new AgentNode("out"));
    auto* const second = new AgentNode("second");
    modifier->scheduleRemoveChild(&root, moving);
    modifier->scheduleAddChild(&to, moving);
    modifier->scheduleRemoveChild(&to, out.get()); // scheduled first, yet carried out last
    modifier->scheduleAddChild(&to, out.get());
    modifier->scheduleAddChild(&to, out.get());
    modifier->scheduleAddChild(&to, second);
    root.sendEvent(AgentEvent::POST_UPDATE);
    EXPECT_EQ(childNames(to), "");
    for (int i = 0; i < 2; ++i) { // once
        root.sendEvent(AgentEvent::UPDATE);
        EXPECT_EQ(childNames(to) + childNames(root), "moving second");
    }
    EXPECT_EQ(moving->getParent(), &to);
    EXPECT_TRUE(to.getOsgTransform()->getNumChildren() == 2 && moving->getOsgTransform()->getNumParents() == 1);
    modifier->scheduleAddChild(&to, second);
    modifier->update();
    modifier->scheduleAddChild(&to, moving);
    modifier.reset(); // what waits is dropped
    EXPECT_EQ(childNames(to), "moving second second");
}

} // namespace
} // namespace tessarin::agent
