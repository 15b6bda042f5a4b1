#include <sceneutils/FindNodeVisitor.h>

#include <osg/Group>
#include <osg/MatrixTransform>
#include <osg/Switch>

#include <gtest/gtest.h>

namespace tessarin::sceneutils {

namespace {

osg::Group* makeGroup(osg::Group* parent, const std::string& name, osg::Group* group = new osg::Group) {
    group->setName(name);
    if (parent) {
        parent->addChild(group);
    }
    return group;
}

osg::Node* find(osg::Node& root, const std::string& name) {
    FindNodeVisitor visitor(name);
    root.accept(visitor);
    return visitor.getFirst();
}

TEST(FindNodeVisitor, TakesTheFirstInDepthFirstOrder) {
    const osg::ref_ptr<osg::Group> root = makeGroup(nullptr, "root");
    osg::Group* left = makeGroup(root, "left");
    osg::Group* deep = makeGroup(makeGroup(left, "inner"), "wheel", new osg::MatrixTransform);
    makeGroup(deep, "wheel");
    osg::Group* right = makeGroup(root, "wheel");
    EXPECT_EQ(find(*root, "wheel"), deep);
    EXPECT_EQ(find(*right, "wheel"), right);
    EXPECT_EQ(find(*root, "root"), root);
    EXPECT_EQ(find(*root, "Wheel"), nullptr);
    EXPECT_EQ(find(*root, ""), nullptr);
    osg::Group* unnamed = makeGroup(left, "");
    EXPECT_EQ(find(*root, ""), unnamed);
}

TEST(FindNodeVisitor, FindsWhatIsHidden) {
    const osg::ref_ptr<osg::Group> root = makeGroup(nullptr, "root");
    auto* off = new osg::Switch;
    makeGroup(root, "switch", off);
    osg::Group* masked = makeGroup(off, "masked");
    off->setAllChildrenOff();
    masked->setNodeMask(0);
    osg::Group* target = makeGroup(masked, "target");
    EXPECT_EQ(find(*root, "target"), target);
}

struct CountingGroup : osg::Group {
    void traverse(osg::NodeVisitor& visitor) override {
        ++traversals;
        osg::Group::traverse(visitor);
    }
    int traversals = 0;
};

TEST(FindNodeVisitor, EndsItsWalkWithTheFirstAndKeepsNothingAlive) {
    osg::ref_ptr<osg::Group> root = makeGroup(nullptr, "root");
    auto* hit = new CountingGroup;
    makeGroup(root, "target", hit);
    auto* behind = new CountingGroup;
    makeGroup(root, "behind", behind);
    FindNodeVisitor visitor("target");
    root->accept(visitor);
    EXPECT_EQ(visitor.getFirst(), hit);
    EXPECT_EQ(hit->traversals, 0);
    EXPECT_EQ(behind->traversals, 0);

    root->removeChild(hit);
    EXPECT_EQ(visitor.getFirst(), nullptr);
    osg::Group* next = makeGroup(behind, "target");
    visitor.reset();
    root->accept(visitor);
    EXPECT_EQ(visitor.getFirst(), next);
    EXPECT_EQ(behind->traversals, 1);
}

} // namespace

} // namespace tessarin::sceneutils
