#include <tests/layers/XMLTest.h>

#include <memory>
#include <random>

namespace tessarin::xml_parser {

namespace {

TEST(XMLNode, FindsChildrenAndAttributes) {
    XMLNode root("root", nullptr);
    XMLNode* const upper = root.addChild("Tag");
    XMLNode* const lower = root.addChild("tag");
    upper->addChild("deep");
    EXPECT_TRUE(root.getNumChildren() == 2 && root.getChild(1) == lower);
    EXPECT_TRUE(!root.getChild(-1) && !root.getChild(2));
    EXPECT_TRUE(root.getChild("tag", true) == lower && root.getChild("tAG", false) == upper);
    EXPECT_TRUE(!root.getChild("tAG", true) && !root.getChild("ta", false) && !root.getChild("deep", true));
    root.attributes["empty"] = "";
    std::string value = "default";
    EXPECT_TRUE(!root.getAttributeValueString("name", value) && value == "default");
    EXPECT_TRUE(root.getAttributeValueString("empty", value) && value.empty());
    EXPECT_EQ(root.getAttributeValue("name"), "");
}

TEST(XMLNode, MovesBetweenParentsAndNeverIntoItself) {
    XMLNode root("root", nullptr);
    { const XMLNode passing("passing", &root); }
    auto* const left = new XMLNode("left", &root);
    EXPECT_TRUE(left->getParent() == &root && root.getNumChildren() == 0) << "it joins only when added";
    root.addChild(left);
    XMLNode* const right = root.addChild("right");
    XMLNode* const leaf = left->addChild("leaf");
    right->addChild(leaf);
    EXPECT_EQ(leaf->getParent(), right);
    root.addChild(left);
    for (XMLNode* const refused : {&root, right, leaf, static_cast<XMLNode*>(nullptr)})
        leaf->addChild(refused);
    EXPECT_EQ(describe(root), "<root<right<leaf>><left>>");
    delete right;
    EXPECT_EQ(describe(root), "<root<left>>");
}

TEST(XMLNode, PrintsOneElementALine) {
    XMLNode root("AgentNode", nullptr);
    root.attributes["name"] = "a<b & \"c\"";
    root.addChild("Transform")->addChild("Translate")->text = "1.5 0 -2";
    XMLNode* const mixed = root.addChild("Mixed");
    mixed->text = "1 > 0";
    mixed->addChild("Empty");
    EXPECT_EQ(print(root, 1), "  <AgentNode name=\"a&lt;b &amp; &quot;c&quot;\">\n"
                              "    <Transform>\n"
                              "      <Translate>1.5 0 -2</Translate>\n"
                              "    </Transform>\n"
                              "    <Mixed>1 &gt; 0<Empty/>\n"
                              "    </Mixed>\n"
                              "  </AgentNode>\n");
}

TEST(XMLNode, TakesBranchesDeeperThanTheStack) {
    constexpr int depth = 200000;
    LogCapture log("xml");
    XMLNode root("n", nullptr);
    XMLNode* node = &root;
    for (int i = 1; i < AbstractXMLReader::defaultMaxDepth; ++i)
        node = node->addChild("n");
    EXPECT_FALSE(print(root).empty());
    EXPECT_TRUE(log.take().empty()) << "as deep as a reader takes";
    for (int i = AbstractXMLReader::defaultMaxDepth; i < depth; ++i)
        node = node->addChild("n");
    root.addChild("n");
    const std::string document = print(root);
    EXPECT_THAT(log.take(), ElementsAre("300 The branch <n> is nested 200000 elements deep: it is printed whole, but "
                                        "readers take 1000 unless they are told otherwise"));
    EXPECT_LT(document.size(), 110U * depth) << "indentation ends somewhere";
    PlainReader reader;
    reader.setMaxDepth(depth);
    ASSERT_EQ(reader.parse(document, true), AbstractXMLReader::SUCCESS);
    int levels = 0;
    for (const XMLNode* level = reader.getRoot(); level; level = level->getChild(0))
        ++levels;
    EXPECT_EQ(levels, depth);
}

/// Random trees of what is hard to write down.
class TreeMaker {
public:
    explicit TreeMaker(unsigned seed) : random(seed) {}

    void fill(XMLNode& root) {
        std::vector<XMLNode*> nodes{&root};
        for (int i = pick(40); i > 0; --i)
            nodes.push_back(nodes[static_cast<std::size_t>(pick(static_cast<int>(nodes.size())))]->addChild(name()));
        for (XMLNode* const node : nodes) {
            node->text = text();
            for (int i = pick(4); i > 0; --i)
                node->attributes[name()] = text();
        }
    }

private:
    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); }

    std::string name() {
        static const char* const names[] = {"a", "A.b-c", "_", "x:y", "f\xC3\xBCr", "\xE5\x90\x8D\xE5\x89\x8D"};
        return names[pick(6)];
    }

    std::string text() {
        static const char* const pieces[] = {" ",
                                             "\n",
                                             "\t",
                                             "\r",
                                             "\r\n",
                                             "  \n  ",
                                             "a",
                                             "&",
                                             "<",
                                             ">",
                                             "]]>",
                                             "\"",
                                             "'",
                                             "&amp;",
                                             "<b>",
                                             "&#10;",
                                             "\x7F",
                                             "<!--x-->",
                                             "\xC3\xA4",
                                             "\xE2\x82\xAC",
                                             "\xF0\x9F\x98\x80",
                                             "\xC2\x85",
                                             "\xE2\x80\xA8",
                                             "\xEF\xBB\xBF",
                                             "\xEF\xBF\xBD",
                                             "\xED\x9F\xBF",
                                             "\xF4\x8F\xBF\xBF"};
        std::string result;
        const bool isBlank = pick(3) == 0;
        for (int i = pick(5); i > 0; --i)
            result += pieces[pick(isBlank ? 6 : 27)];
        return result;
    }

    std::mt19937 random;
};

TEST(XMLRoundTrip, GivesEveryTreeBack) {
    LogCapture log("xml");
    PlainReader reader;
    for (unsigned seed = 0; seed < 1000; ++seed) {
        XMLNode tree("root", nullptr);
        TreeMaker(seed).fill(tree);
        std::istringstream stream(print(tree, static_cast<int>(seed % 3)));
        ASSERT_EQ(reader.parse(stream), AbstractXMLReader::SUCCESS) << reader.getErrorMessage() << stream.str();
        ASSERT_EQ(describe(*reader.getRoot()), describe(tree)) << stream.str();
    }
    for (std::size_t length = 65520; length < 65540;
         ++length) { // over the ends of the pieces that are read and written
        XMLNode tree("a", nullptr);
        tree.text = std::string(length, 'x') + "\r\xE2\x82\xAC\xF0\x9F\x98\x80 \n" + std::string(100000, '\t');
        tree.addChild("b")->attributes["v"] = tree.text;
        ASSERT_EQ(reader.parse(print(tree), true), AbstractXMLReader::SUCCESS);
        ASSERT_TRUE(describe(*reader.getRoot()) == describe(tree)) << length;
    }
    EXPECT_TRUE(log.take().empty());
}

TEST(XMLRoundTrip, ReplacesWhatXMLCannotHold) {
    // '?' stands for U+FFFD. Cut off, longer than needed, surrogates, and beyond U+10FFFF are one for each byte.
    const std::pair<std::string, std::string> cases[] = {{std::string("a\0b", 3), "a?b"},
                                                         {"\x01\x08\x0B\x1F", "????"},
                                                         {"\xEF\xBF\xBE|\xEF\xBF\xBF", "?|?"},
                                                         {"\x80|\xBF|\xFF", "?|?|?"},
                                                         {"\xC3", "?"},
                                                         {"\xE2\x82|", "??|"},
                                                         {"\xC0\xAF", "??"},
                                                         {"\xE0\x80\xAF|", "???|"},
                                                         {"\xF0\x8F\xBF\xBF", "????"},
                                                         {"\xED\xA0\x80", "???"},
                                                         {"\xF4\x90\x80\x80", "????"},
                                                         {"\xF5\x80\x80\x80", "????"}};
    LogCapture log("xml");
    PlainReader reader;
    for (const auto& [text, expected] : cases) {
        XMLNode node("a", nullptr);
        node.addChild("b")->attributes["v"] = text;
        node.getChild(0)->text = text;
        ASSERT_EQ(reader.parse(print(node), true), AbstractXMLReader::SUCCESS) << reader.getErrorMessage();
        std::string found = reader.getRoot()->getChild(0)->text;
        EXPECT_EQ(reader.getRoot()->getChild(0)->attributes["v"], found);
        for (std::size_t at; (at = found.find("\xEF\xBF\xBD")) != std::string::npos;)
            found.replace(at, 3, "?");
        EXPECT_EQ(found, expected);
        EXPECT_THAT(log.take(),
                    ElementsAre("300 The branch <a> holds what XML cannot, first in <b>: printed with U+FFFD "
                                "in texts and values, '_' in names"));
    }

    XMLNode node("", nullptr);
    node.attributes = {{"a b", "1"}, {"a_b", "2"}, {"a<b", "3"}, {"1", "4"}, {"\xC3\x97", "5"}};
    for (const char* const tag : {"2nd part", "\xC3\xA4\xC3\x97\xC2\xB7", "\xC2\xB7"}) // the last begins no name
        node.addChild(tag);
    ASSERT_EQ(reader.parse(print(node), true), AbstractXMLReader::SUCCESS) << reader.getErrorMessage();
    EXPECT_EQ(reader.getRoot()->attributes.size(), 5U) << "each has a name of its own";
    EXPECT_EQ(reader.getRoot()->getAttributeValue("a_b"), "2");
    reader.getRoot()->attributes.clear();
    EXPECT_EQ(describe(*reader.getRoot()), "<_<_nd_part><\xC3\xA4_\xC2\xB7><_>>");
    EXPECT_EQ(log.take().size(), 1U);
}

} // namespace

} // namespace tessarin::xml_parser
