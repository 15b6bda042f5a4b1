#include <sceneutils/FindNodeVisitor.h>

#include <osg/Group>
#include <osg/Switch>

#include <gtest/gtest.h>

namespace tessarin::sceneutils {

namespace {

struct Counting : osg::Switch {
    void traverse(osg::NodeVisitor& visitor) override {
        ++traversals;
        osg::Switch::traverse(visitor);
    }
    int traversals = 0;
};

Counting* add(osg::Group* parent, const std::string& name) {
    auto* const group = new Counting;
    group->setName(name);
    parent->addChild(group);
    return group;
}

osg::Node* find(osg::Node& root, const std::string& name) {
    FindNodeVisitor visitor(name);
    root.accept(visitor);
    return visitor.getFirst();
}

TEST(FindNodeVisitor, TakesTheFirstInDepthFirstOrderAlsoIfHidden) {
    const osg::ref_ptr<osg::Group> root = new osg::Group;
    Counting* const left = add(root, "left");
    left->setAllChildrenOff();
    Counting* const deep = add(add(left, "inner"), "wheel");
    Counting* const right = add(root, "wheel");
    add(deep, "wheel");
    add(right, "behind")->setNodeMask(0);
    EXPECT_EQ(find(*root, "wheel"), deep);
    EXPECT_EQ(deep->traversals + right->traversals, 0) << "the walk ends with the first";
    EXPECT_EQ(find(*right, "wheel"), right);
    EXPECT_EQ(find(*root, "behind"), right->getChild(0));
    EXPECT_EQ(find(*root, ""), root);
    EXPECT_EQ(find(*root, "Wheel"), nullptr);

    FindNodeVisitor visitor("wheel");
    root->accept(visitor);
    root->removeChild(left);
    EXPECT_EQ(visitor.getFirst(), nullptr) << "a visitor keeps nothing alive";
    visitor.reset();
    root->accept(visitor);
    EXPECT_EQ(visitor.getFirst(), right);
}

} // namespace

} // namespace tessarin::sceneutils
