#include <xml_parser/XMLNode.h>

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace tessarin::xml_parser {

namespace {

TEST(XMLNode, FindsChildrenAndAttributes) {
    XMLNode root("root", nullptr);
    XMLNode* upper = root.addChild("Tag");
    XMLNode* lower = root.addChild("tag");
    upper->addChild("deep");
    EXPECT_EQ(root.getNumChildren(), 2);
    EXPECT_EQ(root.getChild(1), lower);
    EXPECT_EQ(root.getChild(-1), nullptr);
    EXPECT_EQ(root.getChild(2), nullptr);
    EXPECT_EQ(root.getChild("tag", true), lower);
    EXPECT_EQ(root.getChild("tAG", true), nullptr);
    EXPECT_EQ(root.getChild("tAG", false), upper);
    EXPECT_EQ(root.getChild("ta", false), nullptr);
    EXPECT_EQ(root.getChild("deep", true), nullptr);

    root.attributes["empty"] = "";
    std::string value = "default";
    EXPECT_FALSE(root.getAttributeValueString("name", value));
    EXPECT_EQ(value, "default");
    EXPECT_TRUE(root.getAttributeValueString("empty", value));
    EXPECT_EQ(value, "");
    EXPECT_EQ(root.getAttributeValue("name"), "");
}

TEST(XMLNode, JoinsItsParentOnlyWhenAdded) {
    XMLNode root("root", nullptr);
    auto* node = new XMLNode("node", &root);
    EXPECT_EQ(node->getParent(), &root);
    EXPECT_EQ(root.getNumChildren(), 0);
    { const XMLNode passing("passing", &root); }
    root.addChild(node);
    EXPECT_EQ(root.getChild(0), node);
}

TEST(XMLNode, MovesBetweenParentsAndNeverIntoItself) {
    XMLNode root("root", nullptr);
    XMLNode* left = root.addChild("left");
    XMLNode* right = root.addChild("right");
    XMLNode* leaf = left->addChild("leaf");
    right->addChild(leaf);
    EXPECT_EQ(left->getNumChildren(), 0);
    EXPECT_EQ(leaf->getParent(), right);

    root.addChild(left);
    EXPECT_EQ(root.getChild(0), right);
    EXPECT_EQ(root.getChild(1), left);
    EXPECT_EQ(root.getNumChildren(), 2);

    leaf->addChild(&root);
    leaf->addChild(right);
    leaf->addChild(leaf);
    leaf->addChild(static_cast<XMLNode*>(nullptr));
    EXPECT_EQ(leaf->getNumChildren(), 0);
    EXPECT_EQ(right->getParent(), &root);

    delete right;
    EXPECT_EQ(root.getNumChildren(), 1);
    EXPECT_EQ(root.getChild(0), left);
}

TEST(XMLNode, HoldsBranchesDeeperThanTheStack) {
    auto root = std::make_unique<XMLNode>("n", nullptr);
    XMLNode* node = root.get();
    for (int i = 0; i < 1000000; ++i) {
        node = node->addChild("n");
    }
    std::ostringstream stream;
    root->getChild(0)->printBranch(stream, 0);
    EXPECT_LT(stream.str().size(), 110U * 1000000);
    root.reset();
}

TEST(XMLNode, PrintsOneElementALine) {
    XMLNode root("AgentNode", nullptr);
    root.attributes["name"] = "a<b & \"c\"";
    XMLNode* transform = root.addChild("Transform");
    transform->addChild("Translate")->text = "1.5 0 -2";
    transform->addChild("Rotate")->text = "0 0 0 1";
    XMLNode* mixed = root.addChild("Mixed");
    mixed->text = "1 > 0";
    mixed->addChild("Empty");
    std::ostringstream stream;
    stream.width(40);
    root.printBranch(stream, 1);
    EXPECT_EQ(stream.str(), "  <AgentNode name=\"a&lt;b &amp; &quot;c&quot;\">\n"
                            "    <Transform>\n"
                            "      <Translate>1.5 0 -2</Translate>\n"
                            "      <Rotate>0 0 0 1</Rotate>\n"
                            "    </Transform>\n"
                            "    <Mixed>1 &gt; 0<Empty/>\n"
                            "    </Mixed>\n"
                            "  </AgentNode>\n");
}

} // namespace

} // namespace tessarin::xml_parser
