#include <tests/agent/AgentTest.h>

#include <agent/SceneGraphModifierComponent.h>

#include <osg/MatrixTransform>

#include <new>

namespace tessarin::agent {
namespace {

TEST(AgentNode, SearchesStopAtTheFirst) {
    Journal journal;
    AgentNode root("root");
    auto outside = std::make_unique<AgentNode>("twin");
    AgentNode* const first = root.addChild("twin");
    root.addChild("twin");
    AgentNode* const deep = first->addChild("deep");
    EXPECT_EQ(root.getOrAddChild("new"), root.getOrAddChild("new"));
    EXPECT_TRUE(root.getChild("twin") == first && !root.getChild("deep") && !root.getChild("Twin"));
    EXPECT_TRUE(!root.hasAgent("twin", 0) && root.hasAgent("twin", 1) && !root.hasAgent("deep", 1));
    EXPECT_TRUE(root.hasAgent("deep", 2) && !root.hasAgent("root", 5) && listen(first, journal)->hasAgent("deep", 1));
    EXPECT_EQ(AgentNode::getAgentNode("twin"), outside.get());
    outside.reset();
    EXPECT_EQ(AgentNode::getAgentNode("twin"), first);
    EXPECT_EQ(AgentNode::getAgentNode(deep->getOsgTransform()), deep);
    EXPECT_EQ(AgentNode::getAgentNode(osg::ref_ptr<osg::Transform>(new osg::MatrixTransform)), nullptr);
}

TEST(AgentNodeDeathTest, NoAgentStandsBelowItself) {
    AgentNode root, second;
    AgentNode* const child = root.addChild("child");
    AgentNode* const deep = child->addChild("deep");
    second.addChild(child);
    for (AgentNode* const above : {&root, &second, child, deep})
        EXPECT_DEBUG_DEATH(deep->addChild(above), "an agent cannot be its own descendant");
    EXPECT_EQ(childNames(*deep), "");
}

TEST(AgentNode, TheDestructorTakesTheBranchDepthFirst) {
    Journal journal;
    osg::ref_ptr<osg::Group> scene = new osg::Group;
    std::vector<osg::ref_ptr<osg::Transform>> transforms;
    {
        AgentNode root("root");
        scene->addChild(root.getOsgTransform());
        AgentNode* const a = root.addChild("a");
        for (AgentNode* const node : {&root, a, a->addChild("deep"), root.addChild("b")}) {
            RecordingComponent* const first = listen(node, journal);
            first->osgNode = new osg::Node;
            node->getOsgTransform()->addChild(first->osgNode);
            first->actions["deleted"] = [&, first] { journal.push_back("of " + first->getAgentNode()->getName()); };
            listen(node, journal);
            transforms.push_back(node->getOsgTransform());
        }
    }
    EXPECT_EQ(take(journal), "root.deleted of root root.deleted a.deleted of a a.deleted deep.deleted of deep "
                             "deep.deleted b.deleted of b b.deleted");
    for (const auto& transform : transforms) {
        EXPECT_EQ(transform->getNumParents() + transform->getNumChildren(), 0u);
        EXPECT_EQ(AgentNode::getAgentNode(transform), nullptr);
    }
}

TEST(AgentNode, WorksWithAnotherTransformAndWithNone) {
    Journal journal;
    AgentNode root;
    AgentNode* const child = root.addChild("child");
    const osg::ref_ptr<osg::Transform> old = root.getOsgTransform(), other = new osg::MatrixTransform;
    root.setOsgTransform(other);
    EXPECT_TRUE(AgentNode::getAgentNode(other) == &root && AgentNode::getAgentNode(old) == &root);
    EXPECT_TRUE(child->getOsgTransform()->getParent(0) == old && other->getNumChildren() == 0);
    root.setOsgTransform(nullptr);
    const std::unique_ptr<RecordingComponent> component(listen(&root, journal));
    component->osgNode = new osg::Node;
    const Owned removed(root.addChild("removed"));
    removed->setOsgTransform(nullptr);
    removed->addChild("below");
    root.removeChild(removed.get());
    child->markForRemoval();
    EXPECT_EQ(send(root, journal), "update");
    EXPECT_EQ(childNames(root), "");
    root.removeComponent(component.get());
}

TEST(AgentNode, MarkedChildrenGoAtTheEndOfTheirParentsNextEvent) {
    // Few and many, and in few runs and many, they take different ways out of the scene graph.
    for (const int count : {3, 40, 200}) {
        SCOPED_TRACE(count);
        AgentNode root, second;
        for (int i = 0; i < count; ++i)
            root.addChild(std::to_string(i));
        Journal staying;
        for (AgentNode* const child : root.getChildren()) {
            if (child->getName().back() % 3 == 0)
                child->markForRemoval();
            else
                staying.push_back(child->getName());
        }
        second.getOsgTransform()->addChild(root.getChild("1")->getOsgTransform());
        root.getChild("0")->sendEvent(AgentEvent::UPDATE); // only the parent's events sweep
        root.markForRemoval();                             // a root stays
        EXPECT_EQ(root.getChildren().size(), static_cast<std::size_t>(count));
        root.sendEvent(AgentEvent::RESERVED);
        EXPECT_EQ(childNames(root), take(staying));
        unsigned i = 0;
        for (AgentNode* const child : root.getChildren()) {
            EXPECT_EQ(root.getOsgTransform()->getChild(i++), child->getOsgTransform().get());
            EXPECT_EQ(child->getOsgTransform()->getParent(0), root.getOsgTransform().get()) << "the first path stays";
        }
        EXPECT_EQ(root.getOsgTransform()->getNumChildren(), i);
    }
}

TEST(AgentNode, ListedTwiceIsVisitedTwiceAndDeletedOnce) {
    Journal journal;
    AgentNode other("other");
    for (const bool marked : {true, false}) {
        AgentNode root("root");
        AgentNode* const twice = root.addChild("twice");
        root.addChild("between");
        root.addChild(twice);
        other.addChild(twice);
        listen(twice, journal);
        EXPECT_EQ(childNames(root) + ' ' + send(root, journal), "twice between twice twice.update twice.update");
        root.removeChild(twice);
        EXPECT_EQ(childNames(root), "between");
        EXPECT_EQ(root.getOsgTransform()->getNumChildren(), 1u);
        root.addChild(twice);
        root.addChild(twice);
        if (marked)
            twice->markForRemoval();
        root.sendEvent(AgentEvent::POST_UPDATE);
        EXPECT_EQ(take(journal) + childNames(other), marked ? "twice.deleted" : "twice");
    }
    EXPECT_EQ(take(journal) + childNames(other), "twice.deleted");
    EXPECT_EQ(other.getOsgTransform()->getNumChildren(), 0u);
}

TEST(Handles, ANewAgentAtTheOldAddressIsAnotherOne) {
    alignas(AgentNode) unsigned char place[sizeof(AgentNode)];
    auto* agent = new (&place) AgentNode("old");
    Journal journal;
    AgentNode orphan, waiting;
    agent->addChild(&orphan);
    agent->removeChild(&orphan);
    const osg::ref_ptr<osg::Transform> transform = agent->getOsgTransform();
    const osg::ref_ptr<osg::Transform> second = new osg::MatrixTransform(*transform->asMatrixTransform());
    AgentNodeHandle handle(agent), first(agent), late;
    first = nullptr;
    const Owned unlisted(waiting.addChild("unlisted"));
    auto* const modifier = new SceneGraphModifierComponent;
    waiting.addComponent(modifier);
    modifier->scheduleAddChild(agent, unlisted.get());
    modifier->scheduleRemoveChild(&waiting, agent);
    modifier->scheduleRemoveChild(&waiting, unlisted.get());
    listen(agent->addChild("child"), journal)->actions["deleted"] = [&] {
        EXPECT_FALSE(handle || AgentNode::getAgentNode(transform) || AgentNode::getAgentNode("old"));
        late = agent;
    };
    agent->~AgentNode();
    agent = new (&place) AgentNode("new");
    EXPECT_TRUE(!orphan.getParent() && !handle && !late && !journal.empty());
    EXPECT_TRUE(!AgentNode::getAgentNode(transform) && !AgentNode::getAgentNode(second)) << "a copy shares the link";
    waiting.sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(childNames(*agent) + childNames(waiting), "") << "the rest is carried out";
    agent->~AgentNode();
}

} // namespace
} // namespace tessarin::agent
