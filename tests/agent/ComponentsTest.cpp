#include <tests/agent/AgentTest.h>

#include <agent/PlainModelLoader.h>

#include <osg/ProxyNode>
#include <osgDB/WriteFile>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace tessarin::agent {
namespace {

using Joint = JointDouble<dynamics::DynamicsRevoluteJoint>;

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
    component->initialize();
    EXPECT_EQ(component->getModel(), nullptr);
    for (const char* const path : {"a.daex", "dae", "a.dae.osg", ""})
        load(path);
    EXPECT_THAT(loader.paths, ElementsAre("a.osg", "missing.osg", "a.daex", "dae", "a.dae.osg", ""));
    EXPECT_THAT(world.paths, IsEmpty());
    EXPECT_THAT(log.take(), IsEmpty());

    const std::string file = testing::TempDir() + "tessarin_model_test.osgt";
    ASSERT_TRUE(osgDB::writeNodeFile(*node.getOsgTransform(), file));
    EXPECT_NE(VisualModelComponentModelLoader().loadModel(file), nullptr);
    std::remove(file.c_str());
    EXPECT_EQ(VisualModelComponentModelLoader().loadModel(file), nullptr);
}

TEST_F(VisualModel, APlainLoaderKeepsOpenSceneGraphFromRunningScriptsAndAskingServers) {
    const std::string trace = testing::TempDir() + "tessarin_trace", script = trace + ".lua", proxy = trace + ".osgt";
    std::ofstream(script) << "io.open('" << trace << "', 'w'):close()";
    const osg::ref_ptr<osg::ProxyNode> other = new osg::ProxyNode;
    other->setFileName(0, script);
    ASSERT_TRUE(osgDB::writeNodeFile(*other, proxy));

    VisualModelComponentModelLoader().loadModel(script);
    EXPECT_EQ(std::remove(trace.c_str()), 0) << "OpenSceneGraph runs no scripts any more, so there is nothing to test";
    {
        PlainModelLoader plain;
        VisualModelComponent::setModelLoader(&plain);
        const auto lines = [&](const std::string& path) {
            EXPECT_EQ(load(path)->getModel() != nullptr, path == proxy);
            return log.takeErrors();
        };
        EXPECT_THAT(lines(script), ElementsAre(testing::AllOf(testing::HasSubstr(script + ": "),
                                                              testing::HasSubstr("known are 3ds, ac, dae, "))));
        EXPECT_THAT(lines(proxy), ElementsAre(testing::HasSubstr(script + ": ")));
        for (const char* const path :
             {"http://127.0.0.1:9/x.dae", "file:///x.dae", "/dev.dae", "/dev/null", "x.dae.gz"})
            EXPECT_THAT(lines(path), ElementsAre(testing::StartsWith(path + std::string(": ")))) << path;
        const std::string folder = trace + ".dae";
        std::filesystem::create_directory(folder);
        EXPECT_THAT(lines(folder), ElementsAre(folder + ": no regular file, it isn't read"));
        std::filesystem::remove(folder);
        EXPECT_FALSE(std::filesystem::exists(trace));
        VisualModelComponent::setModelLoader(&loader);
    }
    VisualModelComponentModelLoader().loadModel(script);
    EXPECT_EQ(std::remove(trace.c_str()), 0) << "nothing is left of a loader that has ended";
    std::remove(script.c_str());
    std::remove(proxy.c_str());
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
    EXPECT_NE(dynamic_cast<JointComponent&>(*node.getComponent("hinge")).getRevoluteJoint(), nullptr);
    delete component;
    EXPECT_EQ(BodyDouble::alive, 2) << "they belong to the tree";
    node.getChild("wheel")->markForRemoval();
    node.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(BodyDouble::alive, 1);
    load("car.dae");
    EXPECT_EQ(childNames(node), "body wheel body");
}

TEST_F(VisualModel, WhatIsMissingIsLoggedAndSkipped) {
    const osg::ref_ptr<osg::Node> model = loader.models["a.dae"] = new osg::Node;
    AgentNode::dynamicsWorld = nullptr;
    EXPECT_EQ(load("a.dae")->getModel(), model);
    VisualModelComponent::setModelLoader(nullptr);
    load("a.osg");
    EXPECT_THAT(log.takeErrors(), ElementsAre("No dynamics world is set to load the physics of a.dae",
                                              "No model loader is set to load a.osg"));
    AgentNode::dynamicsWorld = &world;
    VisualModelComponent::setModelLoader(&loader);
    VisualModelComponent alone; // on no agent
    alone.setFilePath("a.dae");
    alone.initialize();
    EXPECT_EQ(alone.getModel(), model);
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
    modifier->scheduleRemoveChild(&to, out.get()); // scheduled first, yet carried out last
    for (AgentNode* const added : {moving, out.get(), out.get(), second})
        modifier->scheduleAddChild(&to, added);
    root.sendEvent(AgentEvent::POST_UPDATE);
    EXPECT_EQ(childNames(to), "");
    for (int i = 0; i < 2; ++i) { // once
        root.sendEvent(AgentEvent::UPDATE);
        EXPECT_EQ(childNames(to) + childNames(root), "moving second");
    }
    EXPECT_EQ(moving->getParent(), &to);
    EXPECT_TRUE(to.getOsgTransform()->getNumChildren() == 2 && moving->getOsgTransform()->getNumParents() == 1);
    modifier->scheduleAddChild(&to, moving);
    modifier.reset(); // what waits is dropped
    EXPECT_EQ(childNames(to), "moving second");
}

BodyDouble* giveBody(AgentNode& node) {
    auto* const body = new BodyDouble;
    static_cast<RigidBodyComponent*>(node.addComponent("RigidBodyComponent"))->setBody(body);
    return body;
}

TEST(RigidBodyComponent, OwnsItsBodyAndTheLastOneOnTheAgentCounts) {
    AgentNode node;
    auto* const first = static_cast<RigidBodyComponent*>(node.addComponent("RigidBodyComponent"));
    auto* const second = static_cast<RigidBodyComponent*>(node.addComponent("RigidBodyComponent"));
    auto* const body = new BodyDouble;
    node.magicMove(vec(1, 0, 0)); // bodies may be missing
    node.sendEvent(AgentEvent::UPDATE);
    for (int i = 0; i < 2; ++i)
        second->setBody(body); // the same one stays
    EXPECT_EQ(body->userData, static_cast<dynamics::DynamicsUserData*>(second));
    second->setBody(new BodyDouble);
    EXPECT_TRUE(BodyDouble::alive == 1 && node.getRigidBody() == second);
    node.removeComponent(second);
    second->update(); // without an agent
    EXPECT_EQ(node.getRigidBody(), first);
    for (int i = 0; i < 2; ++i)
        node.addComponent(second);
    delete first;
    EXPECT_EQ(node.getRigidBody(), second);
    delete static_cast<dynamics::DynamicsUserData*>(second);
    EXPECT_TRUE(BodyDouble::alive == 0 && !node.getRigidBody());
}

TEST(RigidBodyComponent, TheBodyLeadsWhileItIsActive) {
    AgentNode root;
    root.setPosition(vec(9, 9, 9));
    AgentNode& node = *root.addChild("node");
    BodyDouble* const body = giveBody(node);
    gmtl::setTrans(body->pose, vec(1, 2, 3));
    for (const bool active : {false, true}) {
        body->active = active;
        node.setPosition(vec(5, 5, 5));
        root.sendEvent(AgentEvent::POST_UPDATE);
        root.sendEvent(AgentEvent::UPDATE);
        EXPECT_EQ(take(body->calls), active ? "getMatrix" : "");
        EXPECT_TRUE(node.getPosition() == (active ? vec(1, 2, 3) : vec(5, 5, 5)));
    }
}

TEST(MagicMove, MovesTheBodiesOfTheBranch) {
    AgentNode root;
    AgentNode* const child = root.addChild("child");
    BodyDouble* const body = giveBody(*child);
    BodyDouble* const deep = giveBody(*child->addChild("deep"));
    BodyDouble* const aside = giveBody(*root.addChild("aside"));
    deep->pose[1][3] = 5;
    child->magicMove(vec(1, 0, -2));
    const std::string rest = "setLinearVelocity(0,0,0) setAngularVelocity(0,0,0)";
    EXPECT_EQ(take(deep->calls), "getMatrix prepareMove setPosition(1,5,-2) " + rest);
    EXPECT_EQ(take(body->calls), "getMatrix prepareMove setPosition(1,0,-2) " + rest);
    EXPECT_THAT(aside->calls, IsEmpty());
    EXPECT_TRUE(child->getPosition() == vec(0, 0, 0)) << "agents follow at the next update";
    root.addComponent("RigidBodyComponent");
    EXPECT_THAT(root.getDynamicsBodies(), testing::UnorderedElementsAre(nullptr, body, deep, aside));
}

TEST(JointComponent, OwnsTheJointAndGivesItAsWhatItIs) {
    AgentNode root;
    auto* const component = static_cast<JointComponent*>(root.addChild("child")->addComponent("JointComponent"));
    const auto kind = [&](dynamics::DynamicsJoint* joint) {
        for (int i = 0; i < 2; ++i)
            component->setJoint(joint); // the same one stays
        EXPECT_THAT(root.getDynamicsJoints(), ElementsAre(joint));
        return std::string(component->getD6Joint() ? "six" : "") + (component->getRevoluteJoint() ? "revolute" : "") +
               (component->getPrismaticJoint() ? "prismatic" : "");
    };
    EXPECT_EQ(kind(new JointDouble<dynamics::DynamicsD6Joint>), "six");
    EXPECT_EQ(kind(new Joint), "revolute");
    EXPECT_EQ(kind(new JointDouble<dynamics::DynamicsPrismaticJoint>), "prismatic");
    EXPECT_EQ(kind(new JointDouble<dynamics::DynamicsJoint>), "");
    EXPECT_EQ(kind(nullptr), "");
    EXPECT_EQ(JointDouble<dynamics::DynamicsJoint>::alive + Joint::alive, 0);
}

} // namespace
} // namespace tessarin::agent
