#include <tests/agent/AgentTest.h>

#include <gmtl/Generate.h>

#include <osg/AutoTransform>
#include <osg/PositionAttitudeTransform>

#include <new>
#include <numeric>

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
    EXPECT_DEBUG_DEATH(*deep = second, "an agent cannot be its own descendant");
    EXPECT_EQ(childNames(*deep), "");
}

TEST(AgentNodeDeathTest, ChildrenMayBeReorderedInTheListAndNoMore) {
    Journal names;
    AgentNode root;
    for (const char* const name : {"a", "b", "c", "d", "e", "f"})
        root.addChild(name);
    std::list<AgentNode*>& children = root.getChildren();
    const auto remove = [&](const char* name) {
        const Owned taken(root.getChild(name));
        root.removeChild(taken.get());
        names.push_back(childNames(root));
    };
    children.reverse();
    std::iter_swap(std::next(children.begin()), std::prev(children.end(), 2)); // in the middle, and then at the ends
    remove("b");
    std::iter_swap(children.begin(), std::prev(children.end()));
    for (const char* const name : {"f", "a"})
        remove(name);
    std::list<AgentNode*>(children.rbegin(), children.rend()).swap(children);
    remove("d");
    EXPECT_THAT(names, ElementsAre("f d c e a", "a d c e", "d c e", "e c"));

    const auto splice = [](bool emptied) {
        auto from = std::make_unique<AgentNode>(), to = std::make_unique<AgentNode>();
        for (const char* const name : {"x", "y", "z"})
            from->addChild(name);
        std::list<AgentNode*>& list = from->getChildren();
        to->getChildren().splice(to->getChildren().end(), list, list.begin(), emptied ? list.end() : --list.end());
        from.reset();
        EXPECT_EQ(childNames(*to), emptied ? "x y z" : "x y");
        to->getChild("x")->markForRemoval();
        to->sendEvent(AgentEvent::UPDATE);
        EXPECT_EQ(childNames(*to), emptied ? "y z" : "y");
    };
    for (const bool emptied : {false, true})
        EXPECT_DEBUG_DEATH(splice(emptied), "entries come and go by addChild and removeChild alone");
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
            first->actions["deleted"] = [&, first] { journal.push_back("of " + first->getAgentNode()->getName()); };
            transforms.push_back(node->getOsgTransform());
        }
    }
    EXPECT_EQ(take(journal), "root.deleted of root a.deleted of a deep.deleted of deep b.deleted of b");
    for (const auto& transform : transforms)
        EXPECT_TRUE(transform->getNumParents() + transform->getNumChildren() == 0 &&
                    !AgentNode::getAgentNode(transform));
}

TEST(AgentNode, WorksWithAnotherTransformAndWithNone) {
    Journal journal;
    AgentNode root;
    AgentNode* const child = root.addChild("child");
    const osg::ref_ptr<osg::Transform> old = root.getOsgTransform(), other = new osg::MatrixTransform;
    root.setOsgTransform(other);
    EXPECT_TRUE(AgentNode::getAgentNode(other) == &root && AgentNode::getAgentNode(old) == &root);
    EXPECT_TRUE(child->getOsgTransform()->getParent(0) == old && other->getNumChildren() == 0);
    other->setUserData(new osg::Node);
    root.setOsgTransform(other);
    EXPECT_EQ(AgentNode::getAgentNode(other), &root) << "also the same transform is told again";
    root.setOsgTransform(nullptr);
    const std::unique_ptr<RecordingComponent> component(listen(&root, journal));
    component->osgNode = new osg::Node;
    const Owned removed(root.addChild("removed"));
    removed->setOsgTransform(nullptr);
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
        Journal staying;
        for (int i = 0; i < count; ++i) {
            AgentNode* const child = root.addChild(std::to_string(i));
            if (i % 10 % 3 == 0)
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
    for (const bool marked : {true, false}) {
        Journal journal;
        AgentNode other("other");
        {
            AgentNode root("root");
            AgentNode* const twice = root.addChild("twice");
            root.addChild("between");
            listen(twice, journal);
            for (AgentNode* const parent : {&other, &root})
                parent->addChild(twice);
            EXPECT_EQ(childNames(root) + ' ' + send(root, journal), "twice between twice twice.update twice.update");
            root.removeChild(twice);
            EXPECT_EQ(childNames(root), "between");
            EXPECT_EQ(root.getOsgTransform()->getNumChildren(), 1u);
            for (int i = 0; i < 2; ++i)
                root.addChild(twice);
            if (marked)
                twice->markForRemoval();
            root.sendEvent(AgentEvent::POST_UPDATE);
            EXPECT_EQ(take(journal) + childNames(other), marked ? "twice.deleted" : "twice");
        }
        EXPECT_EQ(take(journal) + childNames(other), marked ? "" : "twice.deleted");
        EXPECT_EQ(other.getOsgTransform()->getNumChildren(), 0u);
    }
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

using Matrix = gmtl::Matrix<double, 4, 4>;
using Rotation = gmtl::Quat<double>;

const Rotation thirdTurn(0.5, 0.5, 0.5, 0.5); // x becomes y, and y z

TEST(Transform, NumbersCrossInStorageOrderAndPositionAndRotationApart) {
    AgentNode node, other;
    gmtl::Matrix<float, 4, 4> small;
    std::iota(small.mData, small.mData + 16, 0.5f);
    Matrix matrix;
    std::copy(small.mData, small.mData + 16, matrix.mData);
    node.setMatrix(matrix);
    other.setMatrix(small);
    const osg::Matrixd stored = node.getOsgTransform()->asMatrixTransform()->getMatrix();
    EXPECT_TRUE(std::equal(matrix.mData, matrix.mData + 16, stored.ptr()));
    EXPECT_TRUE(node.getMatrix() == matrix && other.getMatrix() == matrix && node.getMatrix().mState == Matrix::FULL);
    EXPECT_TRUE(node.getPosition() == vec(12.5, 13.5, 14.5)) << "the last row there is the last column here";

    AgentNode turned;
    turned.setPosition(vec(1, 2, 3));
    turned.setRotation(thirdTurn);
    EXPECT_TRUE(turned.getPosition() == vec(1, 2, 3));
    turned.setPosition(vec(4, 5, 6));
    EXPECT_TRUE(turned.getRotation() == thirdTurn);
    const osg::Vec3d x = osg::Vec3d(1, 0, 0) * turned.getOsgTransform()->asMatrixTransform()->getMatrix();
    EXPECT_EQ(x, osg::Vec3d(4, 6, 6));
}

TEST(Transform, TheWorldIsTheFirstPathDownTheSceneGraph) {
    AgentNode root, second;
    AgentNode* const child = root.addChild("child");
    root.setPosition(vec(0, 2, 0));
    root.setRotation(thirdTurn);
    child->setPosition(vec(1, 0, 0));
    second.setPosition(vec(100, 0, 0));
    second.addChild(child);
    const osg::ref_ptr<osg::MatrixTransform> above = new osg::MatrixTransform(osg::Matrix::translate(0, 0, 5));
    above->addChild(root.getOsgTransform()); // transforms that belong to no agent count as well
    EXPECT_TRUE(child->getPosition() == vec(1, 0, 0) && child->getWorldPosition() == vec(0, 3, 5));
    EXPECT_TRUE(child->getWorldRotation() == thirdTurn);
    second.removeChild(child);
}

TEST(Transform, OtherKindsThanMatrixTransforms) {
    AgentNode root;
    root.setPosition(vec(10, 0, 0));
    AgentNode* const node = root.addChild("child");
    const osg::ref_ptr<osg::PositionAttitudeTransform> pose = new osg::PositionAttitudeTransform;
    pose->setPosition({1, 2, 3});
    pose->setScale({2, 2, 2});
    pose->setPivotPoint({1, 0, 0});
    root.getOsgTransform()->addChild(pose);
    node->setOsgTransform(pose);
    EXPECT_TRUE(node->getPosition() == vec(-1, 2, 3)) << "the scaled pivot is in the matrix";
    EXPECT_TRUE(node->getWorldPosition() == node->getPosition()) << "parents are not asked";
    Matrix matrix;
    gmtl::setRot(matrix, thirdTurn);
    gmtl::setTrans(matrix, vec(7, 8, 9));
    node->setMatrix(matrix);
    EXPECT_TRUE(pose->getPosition() == osg::Vec3d(7, 8, 9) && pose->getAttitude() == osg::Quat(0.5, 0.5, 0.5, 0.5));
    EXPECT_TRUE(pose->getScale() == osg::Vec3d(2, 2, 2) && pose->getPivotPoint() == osg::Vec3d(1, 0, 0));

    const osg::ref_ptr<osg::Transform> strange = new osg::AutoTransform, none;
    for (const auto& transform : {strange, none}) {
        node->setOsgTransform(transform);
        node->setPosition(vec(1, 2, 3));
        node->setRotation(thirdTurn);
        EXPECT_TRUE(node->getMatrix() == Matrix() && node->getWorldMatrix() == Matrix());
    }
}

} // namespace
} // namespace tessarin::agent
