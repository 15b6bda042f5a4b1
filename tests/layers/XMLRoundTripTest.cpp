#include "RecordingAppender.h"

#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLNodeCreator.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <sstream>

namespace tessarin::xml_parser {

namespace {

using tests::RecordingAppender;

std::string print(const XMLNode& node, int indent = 0) {
    std::ostringstream stream;
    node.printBranch(stream, indent);
    return stream.str();
}

void setUp(XMLNodeCreator& reader) {
    reader.setPruneEmptyTags(false);
    reader.setCreateAttributesFromPrimitiveChildren(false);
}

/// A text in which two trees are equal only if they are.
std::string describe(const XMLNode& node) {
    const auto quoted = [](const std::string& text) { return std::to_string(text.size()) + ':' + text; };
    std::string result = '<' + quoted(node.tag) + quoted(node.text);
    for (const auto& [name, value] : node.attributes) {
        result += '@' + quoted(name) + quoted(value);
    }
    for (int i = 0; i < node.getNumChildren(); ++i) {
        result += describe(*node.getChild(i));
    }
    return result + '>';
}

/// Random trees of what is hard to write down.
class TreeMaker {
public:
    explicit TreeMaker(unsigned seed) : _random(seed) {}

    std::unique_ptr<XMLNode> make() {
        auto root = std::make_unique<XMLNode>("root", nullptr);
        std::vector<XMLNode*> nodes{root.get()};
        for (int i = pick(40); i > 0; --i) {
            XMLNode* parent = nodes[static_cast<std::size_t>(pick(static_cast<int>(nodes.size())))];
            nodes.push_back(parent->addChild(name()));
        }
        for (XMLNode* node : nodes) {
            node->text = text();
            for (int i = pick(4); i > 0; --i) {
                node->attributes[name()] = text();
            }
        }
        return root;
    }

private:
    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(_random); }

    std::string name() {
        static const char* const names[] = {"a", "A.b-c", "_", "x:y", "f\xC3\xBCr", "\xE5\x90\x8D\xE5\x89\x8D"};
        return names[pick(6)];
    }

    std::string text() {
        // clang-format off
        static const char* const pieces[] = {
            " ", "\n", "\t", "\r", "\r\n", "  \n  ", "a", "&", "<", ">", "]]>", "\"", "'", "&amp;", "<b>", "&#10;", "\x7F",
            "<!--x-->", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xC2\x85", "\xE2\x80\xA8", "\xEF\xBB\xBF",
            "\xEF\xBF\xBD", "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF"};
        // clang-format on
        std::string result;
        const bool isBlank = pick(3) == 0;
        for (int i = pick(5); i > 0; --i) {
            result += pieces[pick(isBlank ? 6 : 27)];
        }
        return result;
    }

    std::mt19937 _random;
};

TEST(XMLRoundTrip, GivesEveryTreeBack) {
    const RecordingAppender log("xml");
    for (unsigned seed = 0; seed < 3000; ++seed) {
        const std::unique_ptr<XMLNode> tree = TreeMaker(seed).make();
        const std::string document = print(*tree, static_cast<int>(seed % 3));
        std::istringstream stream(document);
        XMLNodeCreator reader;
        setUp(reader);
        ASSERT_EQ(reader.parse(stream), AbstractXMLReader::SUCCESS) << reader.getErrorMessage() << '\n' << document;
        ASSERT_EQ(describe(*reader.getRoot()), describe(*tree)) << document;
    }
    EXPECT_TRUE(log.messages.empty());
}

TEST(XMLRoundTrip, KeepsTextsOfAnyLengthAcrossPieces) {
    for (std::size_t length = 65520; length < 65540; ++length) {
        XMLNode node("a", nullptr);
        node.text = std::string(length, 'x') + "\r\xE2\x82\xAC\xF0\x9F\x98\x80 \n" + std::string(100000, '\t');
        node.attributes["v"] = node.text;
        XMLNodeCreator reader;
        setUp(reader);
        reader.parse(print(node), true);
        ASSERT_TRUE(reader.getRoot());
        ASSERT_EQ(reader.getRoot()->text, node.text);
        ASSERT_EQ(reader.getRoot()->attributes, node.attributes);
        node.addChild("b");
        reader.parse(print(node), true);
        ASSERT_EQ(describe(*reader.getRoot()), describe(node));
    }
}

TEST(XMLRoundTrip, ReplacesWhatXMLCannotHold) {
    const std::string fffd = "\xEF\xBF\xBD";
    const std::string four = fffd + fffd + fffd + fffd;
    const std::pair<std::string, std::string> cases[] = {
        {std::string("a\0b", 3), "a" + fffd + "b"},
        {"\x01\x08\x0B\x1F", four},
        {"\xEF\xBF\xBE|\xEF\xBF\xBF", fffd + "|" + fffd},
        {"\x80|\xBF|\xFF", fffd + "|" + fffd + "|" + fffd},
        {"\xC3", fffd},                              // cut off
        {"\xE2\x82|", fffd + fffd + "|"},            // cut off
        {"\xC0\xAF", fffd + fffd},                   // longer than needed
        {"\xE0\x80\xAF|", fffd + fffd + fffd + "|"}, // longer than needed
        {"\xF0\x8F\xBF\xBF", four},                  // longer than needed
        {"\xED\xA0\x80", fffd + fffd + fffd},        // surrogate
        {"\xF4\x90\x80\x80", four},                  // beyond U+10FFFF
        {"\xF5\x80\x80\x80", four},                  // beyond U+10FFFF
    };
    for (const auto& [text, expected] : cases) {
        RecordingAppender log("xml");
        XMLNode node("a", nullptr);
        node.addChild("b")->attributes["v"] = text;
        node.addChild("c")->text = text;
        XMLNodeCreator reader;
        setUp(reader);
        ASSERT_EQ(reader.parse(print(node), true), AbstractXMLReader::SUCCESS) << reader.getErrorMessage();
        EXPECT_EQ(reader.getRoot()->getChild(0)->attributes["v"], expected);
        EXPECT_EQ(reader.getRoot()->getChild(1)->text, expected);
        ASSERT_EQ(log.messages.size(), 1U);
        EXPECT_THAT(log.messages[0], testing::HasSubstr("<a> holds what XML cannot, first in <b>"));
    }
}

TEST(XMLRoundTrip, MakesNamesOfWhatIsNone) {
    RecordingAppender log("xml");
    XMLNode node("", nullptr);
    node.attributes = {{"a b", "1"}, {"a_b", "2"}, {"a<b", "3"}, {"1", "4"}, {"\xC3\x97", "5"}, {"\xC3", "6"}};
    node.addChild("2nd part");
    node.addChild("\xC3\xA4\xC3\x97\xC2\xB7");
    node.addChild("\xC2\xB7");
    XMLNodeCreator reader;
    setUp(reader);
    ASSERT_EQ(reader.parse(print(node), true), AbstractXMLReader::SUCCESS) << reader.getErrorMessage();
    const XMLNode& root = *reader.getRoot();
    EXPECT_EQ(root.tag, "_");
    EXPECT_EQ(root.getChild(0)->tag, "_nd_part");
    EXPECT_EQ(root.getChild(1)->tag, "\xC3\xA4_\xC2\xB7");
    EXPECT_EQ(root.getChild(2)->tag, "_") << "the middle dot begins no name";
    EXPECT_EQ(root.getAttributeValue("a_b"), "2");
    std::vector<std::string> values;
    for (const auto& attribute : root.attributes) {
        values.push_back(attribute.second);
    }
    EXPECT_THAT(values, testing::UnorderedElementsAre("1", "2", "3", "4", "5", "6"));
    EXPECT_EQ(log.messages.size(), 1U);
}

TEST(XMLRoundTrip, TakesDeepBranchesWhereTheReaderAllowsThem) {
    constexpr int depth = 200000;
    XMLNode root("n", nullptr);
    XMLNode* node = &root;
    for (int i = 1; i < depth; ++i) {
        node = node->addChild("n");
    }
    XMLNodeCreator reader;
    setUp(reader);
    reader.setMaxDepth(depth);
    ASSERT_EQ(reader.parse(print(root), true), AbstractXMLReader::SUCCESS);
    int levels = 0;
    for (const XMLNode* level = reader.getRoot(); level; level = level->getChild(0)) {
        ++levels;
    }
    EXPECT_EQ(levels, depth);
}

} // namespace

} // namespace tessarin::xml_parser
