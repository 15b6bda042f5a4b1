#include "AgentTest.h"

#include <agent/GeometryComponent.h>
#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/VisualModelComponent.h>
#include <tests/doubles/ModelLoaderDouble.h>
#include <tests/doubles/PhysicsDoubles.h>

#include <osg/MatrixTransform>
#include <osgDB/WriteFile>

#include <filesystem>

namespace tessarin::agent {
namespace {

using doubles::BodyDouble;
using doubles::ModelLoaderDouble;
using doubles::WorldDouble;
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

    VisualModelComponent* attach(const std::string& path) {
        auto* const component = new VisualModelComponent;
        component->setFilePath(path);
        node.addComponent(component);
        return component;
    }

    LogCapture log;
    ModelLoaderDouble loader;
    WorldDouble world;
    AgentNode node{"node"};
};

TEST_F(VisualModel, StandsAsTold) {
    VisualModelComponent* const component = attach("a.osg");
    EXPECT_EQ(component->getName(), "VisualModelComponent");
    EXPECT_EQ(component->getModel(), nullptr);
    loader.models["a.osg"] = new osg::Node;
    EXPECT_EQ(component->initialize(), component);
    EXPECT_EQ(component->getModel(), loader.models["a.osg"]);
    EXPECT_EQ(component->getOsgNode(), nullptr);
    EXPECT_EQ(node.getOsgTransform()->getNumChildren(), 0u);
    component->setFilePath("missing.osg");
    EXPECT_EQ(component->getModel(), loader.models["a.osg"]);
    component->initialize();
    EXPECT_EQ(component->getModel(), nullptr);
    EXPECT_THAT(loader.paths, ElementsAre("a.osg", "missing.osg"));
    EXPECT_THAT(world.paths, IsEmpty());
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(VisualModel, PhysicsBecomeChildrenAndJointComponents) {
    loader.models["car.DAE"] = new osg::Node;
    VisualModelComponent* const component = attach("car.DAE");
    component->initialize();
    EXPECT_THAT(world.paths, ElementsAre("car.DAE"));
    EXPECT_TRUE(world.lastPlacement == BodyDouble::Matrix());
    EXPECT_EQ(component->getModel(), loader.models["car.DAE"]);

    EXPECT_THAT(childNames(node), ElementsAre("wheel", "body"));
    for (AgentNode* const child : node.getChildren()) {
        ASSERT_EQ(componentsOf(*child).size(), 1u);
        EXPECT_EQ(componentsOf(*child)[0]->getName(), "RigidBodyComponent");
        ASSERT_EQ(componentsOf(*child)[0], child->getRigidBody());
        EXPECT_EQ(child->getRigidBody()->getBody()->getName(), child->getName());
        EXPECT_EQ(child->getOsgTransform()->getName(), "AgentNode MatTrans ");
        EXPECT_EQ(child->getParent(), &node);
    }
    EXPECT_EQ(node.getOsgTransform()->getNumChildren(), 2u);
    const std::vector<Component*> components = componentsOf(node);
    ASSERT_EQ(components.size(), 2u);
    EXPECT_EQ(components[0], component);
    EXPECT_EQ(components[1]->getName(), "hinge");
    EXPECT_NE(dynamic_cast<JointComponent&>(*components[1]).getRevoluteJoint(), nullptr);

    node.removeComponent(component);
    delete component;
    EXPECT_EQ(BodyDouble::alive, 2) << "they belong to the tree";
    node.getChild("wheel")->markForRemoval();
    node.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(BodyDouble::alive, 1);
    attach("car.dae")->initialize();
    EXPECT_THAT(childNames(node), ElementsAre("body", "wheel", "body"));
}

TEST_F(VisualModel, OnlyColladaFilesGoToTheWorld) {
    for (const char* const path : {"a.daex", "a.osg", "dae", "a.dae.osg", ""})
        attach(path)->initialize();
    EXPECT_THAT(world.paths, IsEmpty());
    world.scene = nullptr;
    attach("empty.dAe")->initialize();
    EXPECT_EQ(world.paths.size(), 1u);
    EXPECT_THAT(childNames(node), IsEmpty());
}

TEST_F(VisualModel, WhatIsMissingIsLoggedAndSkipped) {
    AgentNode::dynamicsWorld = nullptr;
    loader.models["a.dae"] = new osg::Node;
    VisualModelComponent* const component = attach("a.dae");
    component->initialize();
    EXPECT_THAT(log.takeErrors(), ElementsAre("No dynamics world is set to load the physics of a.dae"));
    EXPECT_NE(component->getModel(), nullptr);
    VisualModelComponent::setModelLoader(nullptr);
    component->setFilePath("a.osg");
    component->initialize();
    EXPECT_THAT(log.takeErrors(), ElementsAre("No model loader is set to load a.osg"));

    AgentNode::dynamicsWorld = &world;
    VisualModelComponent::setModelLoader(&loader);
    VisualModelComponent alone;
    alone.setFilePath("a.dae");
    alone.initialize();
    EXPECT_EQ(alone.getModel(), loader.models["a.dae"]);
    EXPECT_THAT(world.paths, IsEmpty());
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(VisualModel, AHostsOwnRigidBodyClassLeaksNoBody) {
    static SimObjectFactoryFor<RecordingComponent> replacing;
    static SimObjectFactoryRigidBodyComponent standard;
    SimObjectDB::instance()->registerFactory(&replacing, "RigidBodyComponent");
    attach("a.dae")->initialize();
    SimObjectDB::instance()->registerFactory(&standard, "RigidBodyComponent");
    EXPECT_THAT(childNames(node), ElementsAre("wheel", "body"));
    EXPECT_STREQ(node.getChild("wheel")->getComponent("RigidBodyComponent")->getClassName(), "RecordingComponent");
    EXPECT_EQ(BodyDouble::alive, 0);
    AgentNode other;
    EXPECT_NE(dynamic_cast<RigidBodyComponent*>(other.addComponent("RigidBodyComponent")), nullptr);
}

TEST_F(VisualModel, TheLibrarysLoaderReadsWhatOpenSceneGraphReads) {
    const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "tessarin_visual_model_test.osgt";
    const osg::ref_ptr<osg::Group> scene = new osg::Group;
    const osg::ref_ptr<osg::MatrixTransform> wheel = new osg::MatrixTransform(osg::Matrix::translate(1, 2, 3));
    wheel->setName("wheel");
    scene->addChild(wheel);
    ASSERT_TRUE(osgDB::writeNodeFile(*scene, path.string()));

    VisualModelComponentModelLoader real;
    VisualModelComponent::setModelLoader(&real);
    VisualModelComponent* const component = attach(path.string());
    component->initialize();
    std::filesystem::remove(path);
    node.addChild("wheel");
    node.modifyWithXml("<AgentNode><AgentNode name='wheel'><Component class='GeometryComponent' name='g'/>"
                       "</AgentNode></AgentNode>");
    osg::Node* const found = node.getChild("wheel")->getComponent("g")->getOsgNode();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->getName(), "wheel");
    EXPECT_TRUE(found->asTransform()->asMatrixTransform()->getMatrix().isIdentity());
    EXPECT_EQ(entriesIn(*node.getChild("wheel"), found), 1);
    EXPECT_EQ(real.loadModel("/no/such/file.osgt"), nullptr);
}

} // namespace
} // namespace tessarin::agent
