#include "AgentTest.h"

#include <osg/Group>
#include <osg/MatrixTransform>

namespace tessarin::agent {
namespace {

TEST(AgentNode, StandsAsTold) {
    AgentNode unnamed;
    EXPECT_EQ(unnamed.getName(), "");
    EXPECT_EQ(unnamed.getOsgTransform()->getName(), "AgentNode MatTrans ");
    EXPECT_STREQ(unnamed.getClassName(), "AgentNode");
    EXPECT_EQ(unnamed.getParent(), nullptr);
    EXPECT_EQ(unnamed.getRigidBody(), nullptr);
    EXPECT_EQ(unnamed.getSelectionPriority(), 1);
    EXPECT_FALSE(unnamed.getMarkedForRemoval());
    unnamed.setName(unnamed.getName());
    AgentNode named("n");
    named.setName(named.getName());
    EXPECT_EQ(named.getName(), "n");
}

TEST(AgentNode, SearchesStopAtTheFirst) {
    Journal journal;
    AgentNode root("root");
    AgentNode* const outside = new AgentNode("twin");
    AgentNode* const first = root.addChild("twin");
    root.addChild("twin");
    AgentNode* const grandchild = first->addChild("deep");
    EXPECT_EQ(AgentNode::getAgentNode("twin"), outside);
    EXPECT_EQ(root.getChild("twin"), first);
    EXPECT_EQ(root.getChild("deep"), nullptr);
    EXPECT_EQ(root.getChild("Twin"), nullptr);
    EXPECT_EQ(root.getOrAddChild("new"), root.getOrAddChild("new"));
    EXPECT_THAT(childNames(root), ElementsAre("twin", "twin", "new"));

    EXPECT_FALSE(root.hasAgent("twin", 0));
    EXPECT_FALSE(root.hasAgent("twin", -1));
    EXPECT_TRUE(root.hasAgent("twin", 1));
    EXPECT_FALSE(root.hasAgent("deep", 1));
    EXPECT_TRUE(root.hasAgent("deep", 2));
    EXPECT_FALSE(root.hasAgent("root", 5));
    EXPECT_TRUE(listen(first, journal)->hasAgent("deep", 1));

    delete outside;
    EXPECT_EQ(AgentNode::getAgentNode("twin"), first);
    EXPECT_EQ(AgentNode::getAgentNode(grandchild->getOsgTransform()), grandchild);
    EXPECT_EQ(AgentNode::getAgentNode(osg::ref_ptr<osg::Transform>(new osg::MatrixTransform)), nullptr);
    EXPECT_EQ(AgentNode::getAgentNode(osg::ref_ptr<osg::Transform>()), nullptr);
}

TEST(AgentNode, TheSceneGraphMirrorsTheTree) {
    AgentNode root;
    AgentNode* const a = root.addChild("a");
    AgentNode* const b = root.addChild("b");
    AgentNode stranger("s");
    root.removeChild(&stranger);
    EXPECT_THAT(childNames(root), ElementsAre("a", "b"));
    EXPECT_EQ(root.getOsgTransform()->getChild(1), b->getOsgTransform().get());

    root.removeChild(a);
    const Owned owned(a);
    EXPECT_EQ(a->getParent(), &root) << "goes on naming the former parent";
    EXPECT_EQ(a->getOsgTransform()->getNumParents(), 0u);
    b->addChild(a);
    root.addChild(a); // two parents, as long as the caller doesn't remove it from one
    EXPECT_EQ(a->getParent(), &root);
    EXPECT_EQ(a->getOsgTransform()->getNumParents(), 2u);
    b->removeChild(a);
    root.removeChild(a);
    EXPECT_EQ(a->getOsgTransform()->getNumParents(), 0u);
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
            listen(node, journal);
            transforms.push_back(node->getOsgTransform());
        }
        a->markForRemoval();
    }
    EXPECT_THAT(journal, ElementsAre("root.deleted", "root.deleted", "a.deleted", "a.deleted", "deep.deleted",
                                     "deep.deleted", "b.deleted", "b.deleted"));
    for (const auto& transform : transforms) {
        EXPECT_EQ(transform->getNumParents(), 0u);
        EXPECT_EQ(transform->getNumChildren(), 0u) << "neither children nor components' nodes";
        EXPECT_EQ(AgentNode::getAgentNode(transform), nullptr);
    }
    EXPECT_EQ(scene->getNumChildren(), 0u);
}

TEST(AgentNode, AnotherTransformTakesOverAlone) {
    AgentNode root("root");
    AgentNode* const child = root.addChild("child");
    const osg::ref_ptr<osg::Transform> old = root.getOsgTransform();
    const osg::ref_ptr<osg::Transform> other = new osg::MatrixTransform;
    other->setUserData(new osg::Group);
    root.setOsgTransform(other);
    EXPECT_EQ(AgentNode::getAgentNode(other), &root);
    EXPECT_EQ(AgentNode::getAgentNode(old), &root);
    EXPECT_EQ(child->getOsgTransform()->getParent(0), old.get());
    EXPECT_EQ(other->getNumChildren(), 0u);
    other->setUserData(nullptr);
    root.setOsgTransform(other); // the same one: the link is made anew
    EXPECT_EQ(AgentNode::getAgentNode(other), &root);
}

TEST(AgentNode, WithoutATransformTheTreeStillWorks) {
    Journal journal;
    AgentNode root;
    AgentNode* const child = root.addChild("child");
    root.setOsgTransform(nullptr);
    EXPECT_EQ(root.getOsgTransform(), nullptr);
    auto* const component = new RecordingComponent(&journal, "c");
    component->osgNode = new osg::Node;
    root.addComponent(component);
    AgentNode* const other = root.addChild("other");
    other->setOsgTransform(nullptr);
    other->addChild("below");
    child->markForRemoval();
    root.removeChild(other);
    const Owned owned(other);
    journal.clear();
    root.sendEvent(AgentEvent::UPDATE);
    root.removeComponent(component);
    delete component;
    EXPECT_THAT(journal, ElementsAre("c.update", "c.setAgentNode null", "c.deleted"));
    EXPECT_THAT(childNames(root), IsEmpty());
    root.setPosition(vec(1, 2, 3));
    EXPECT_TRUE(root.getPosition() == vec(0, 0, 0));
    EXPECT_TRUE(root.getWorldPosition() == vec(0, 0, 0));
}

TEST(AgentNode, MarkedChildrenGoAtTheEndOfTheirParentsNextEvent) {
    // Few and many take different ways out of the scene graph.
    for (const int count : {3, 40}) {
        AgentNode root;
        std::vector<std::string> staying;
        for (int i = 0; i < count; ++i) {
            AgentNode* const child = root.addChild(std::to_string(i));
            child->addChild("grandchild");
            if (i % 2 == 0)
                child->markForRemoval();
            else
                staying.push_back(child->getName());
        }
        AgentNode* const marked = root.getChild("0");
        EXPECT_TRUE(marked->getMarkedForRemoval());
        marked->sendEvent(AgentEvent::UPDATE);
        EXPECT_EQ(root.getChildren().size(), static_cast<std::size_t>(count)) << "only the parent's events sweep";

        root.markForRemoval(); // a root stays
        root.sendEvent(AgentEvent::RESERVED);
        EXPECT_EQ(childNames(root), staying);
        ASSERT_EQ(root.getOsgTransform()->getNumChildren(), staying.size());
        for (unsigned i = 0; i < staying.size(); ++i)
            EXPECT_EQ(root.getOsgTransform()->getChild(i), root.getChild(staying[i])->getOsgTransform().get());
        for (AgentNode* const child : root.getChildren())
            child->markForRemoval();
        root.sendEvent(AgentEvent::MOUSE_EXIT);
        EXPECT_THAT(childNames(root), IsEmpty());
    }
}

TEST(AgentNode, ListedTwiceIsDeletedOnce) {
    Journal journal;
    {
        AgentNode other("other");
        {
            AgentNode root("root");
            AgentNode* const twice = root.addChild("twice");
            root.addChild("between");
            root.addChild(twice);
            other.addChild(twice);
            EXPECT_THAT(childNames(root), ElementsAre("twice", "between", "twice"));
            listen(twice, journal);
            root.sendEvent(AgentEvent::UPDATE);
            EXPECT_THAT(journal, ElementsAre("twice.update", "twice.update"));
            root.removeChild(twice);
            EXPECT_THAT(childNames(root), ElementsAre("between"));
            EXPECT_EQ(root.getOsgTransform()->getNumChildren(), 1u);
            root.addChild(twice);
            root.addChild(twice);
            journal.clear();
        }
        EXPECT_THAT(journal, ElementsAre("twice.deleted"));
        EXPECT_THAT(childNames(other), IsEmpty());

        AgentNode* const marked = other.addChild("marked");
        other.addChild(marked);
        AgentNode second("second");
        second.addChild(marked);
        marked->markForRemoval();
        other.sendEvent(AgentEvent::UPDATE);
        EXPECT_THAT(childNames(other), IsEmpty());
        EXPECT_THAT(childNames(second), IsEmpty());
        EXPECT_EQ(second.getOsgTransform()->getNumChildren(), 0u);
    }
}

} // namespace
} // namespace tessarin::agent
