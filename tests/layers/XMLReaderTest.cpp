#include "RecordingAppender.h"

#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLNodeCreator.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace tessarin::xml_parser {

namespace {

using testing::ElementsAre;
using tests::RecordingAppender;

struct PlainReader : XMLNodeCreator {
    PlainReader() {
        setPruneEmptyTags(false);
        setCreateAttributesFromPrimitiveChildren(false);
    }
};

std::string toUtf16(const std::string& ascii, bool isBigEndian) {
    std::string result = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) {
        result += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return result;
}

TEST(XMLReader, ReadsADocumentWrittenByHand) {
    const std::string document =
        "<?xml version='1.0'?>\r\n<!DOCTYPE AgentNode SYSTEM 'agent.dtd'>\n"
        "<AgentNode name = 'tr&#117;ck'>\r\n"
        "\t<!-- placed --> <Transform>\n    <Translate>1.5 0\r\n-2</Translate>\n  </Transform>\n"
        "  <Note> a <b/> c<![CDATA[ <&> ]]> </Note>\n"
        "  <Blank> </Blank><Blank>\n<x/>&#32;\n</Blank><Blank>\n<![CDATA[ ]]><x/></Blank>\n"
        "</AgentNode>\n";
    for (const std::string& text : {document, toUtf16(document, true), toUtf16(document, false)}) {
        PlainReader reader;
        ASSERT_EQ(reader.parse(text, true), AbstractXMLReader::SUCCESS) << reader.getErrorMessage();
        const XMLNode& root = *reader.getRoot();
        EXPECT_EQ(root.getAttributeValue("name"), "truck");
        EXPECT_EQ(root.text, "");
        ASSERT_EQ(root.getNumChildren(), 5);
        EXPECT_EQ(root.getChild(0)->text, "");
        EXPECT_EQ(root.getChild(0)->getChild("Translate", true)->text, "1.5 0\n-2");
        EXPECT_EQ(root.getChild(1)->text, " a  c <&>  ");
        EXPECT_EQ(root.getChild(2)->text, " ");
        EXPECT_EQ(root.getChild(3)->text, " \n");
        EXPECT_EQ(root.getChild(4)->text, "\n ");
    }
    PlainReader reader;
    ASSERT_EQ(reader.parse("<?xml version='1.0' encoding='ISO-8859-1'?><a v='\xE4'>\xFC</a>", true), 0);
    EXPECT_EQ(reader.getRoot()->getAttributeValue("v"), "\xC3\xA4");
    EXPECT_EQ(reader.getRoot()->text, "\xC3\xBC");
}

struct Refusal {
    std::string document;
    int result;
    std::string message;
};

std::string nested(int depth) {
    std::string result;
    for (int i = 0; i < depth; ++i) {
        result += "<n>";
    }
    for (int i = 0; i < depth; ++i) {
        result += "</n>";
    }
    return result;
}

TEST(XMLReader, RefusesTheWholeDocumentWithOneLine) {
    constexpr int malformed = AbstractXMLReader::MALFORMED;
    constexpr int refused = AbstractXMLReader::REFUSED;
    const Refusal refusals[] = {
        {"", malformed, "line 1, column 1: no element found"},
        {"<a>\n <b>\n</a>", malformed, "line 3, column 3: mismatched tag"},
        {"<a/><a/>", malformed, "line 1, column 5: junk after document element"},
        {"<a>\xC3\x28</a>", malformed, "line 1, column 4: not well-formed (invalid token)"},
        {"<a x='1' x='2'/>", malformed, "line 1, column 10: duplicate attribute"},
        {"<a>&#0;</a>", malformed, "line 1, column 4: reference to invalid character number"},
        {"<?xml version='1.0' encoding='x-none'?><a/>", malformed, "line 1, column 31: unknown encoding"},
        {"<a>&b;</a>", malformed, "line 1, column 4: undefined entity"},
        {"<!DOCTYPE a SYSTEM 'a.dtd'><a>\n&b;</a>", malformed, "line 2, column 1: undefined entity"},
        {"<!DOCTYPE a SYSTEM 'a.dtd'><a>\n<c d='&amp;&#9;' e=' &b;'/></a>", malformed,
         "line 2, column 1: undefined entity"},
        {toUtf16("<!DOCTYPE a SYSTEM 'a.dtd'>\n<a b='&c;'/>", false), malformed, "line 2, column 1: undefined entity"},
        {"<!DOCTYPE a [%p;<!ENTITY b 'c'>]>\n<a b='&b;'/>", malformed, "line 2, column 1: undefined entity"},
        {"<!DOCTYPE a [\n<!ENTITY b 'bb'>\n<!ENTITY c '&b;&b;'>]><a>&c;</a>", refused,
         "line 2, column 12: documents that declare entities are refused: b"},
        {"<!DOCTYPE a [<!ENTITY b SYSTEM '/etc/hostname'>]><a>&b;</a>", refused,
         "line 1, column 47: documents that declare entities are refused: b"},
        {nested(1001), refused, "line 1, column 3001: elements are nested deeper than 1000"},
    };
    for (const Refusal& refusal : refusals) {
        RecordingAppender log("xml");
        PlainReader reader;
        ASSERT_EQ(reader.parse("<before/>", true), AbstractXMLReader::SUCCESS);
        EXPECT_EQ(reader.parse(refusal.document, true), refusal.result) << refusal.document;
        EXPECT_EQ(reader.getRoot(), nullptr) << refusal.document;
        EXPECT_EQ(reader.getErrorMessage(), refusal.message) << refusal.document;
        EXPECT_THAT(log.messages, ElementsAre(refusal.message));
        EXPECT_THAT(log.levels, ElementsAre(300));
        ASSERT_EQ(reader.parse("<after/>", true), AbstractXMLReader::SUCCESS);
        EXPECT_EQ(reader.getRoot()->tag, "after");
        EXPECT_EQ(reader.getErrorMessage(), "");
        EXPECT_EQ(reader.getErrorLine(), 0);
    }
}

TEST(XMLReader, LetsNestingBeSetAndTypeDeclarationsHaveNoEffect) {
    PlainReader reader;
    EXPECT_EQ(reader.parse(nested(1000), true), AbstractXMLReader::SUCCESS);
    reader.setMaxDepth(2);
    EXPECT_EQ(reader.parse("<a><b/><b/></a>", true), AbstractXMLReader::SUCCESS);
    EXPECT_EQ(reader.parse("<a><b><c/></b></a>", true), AbstractXMLReader::REFUSED);
    ASSERT_EQ(reader.parse("<!DOCTYPE a [<!ATTLIST a x CDATA 'default' y CDATA 'z'>]><a y='1'/>", true), 0);
    EXPECT_EQ(reader.getRoot()->attributes, (std::map<std::string, std::string>{{"y", "1"}}));
}

TEST(XMLReader, SimplifiesUnlessToldNotTo) {
    const std::string document = "<r name='n'><name>other</name><size>1 2</size><none/><blank> </blank>"
                                 "<holder><none/></holder><kept flag=''/><deep><x>1</x></deep></r>";
    XMLNodeCreator both;
    ASSERT_EQ(both.parse(document, true), 0);
    EXPECT_EQ(both.getRoot()->attributes, (std::map<std::string, std::string>{{"name", "n"}, {"size", "1 2"}}));
    ASSERT_EQ(both.getRoot()->getNumChildren(), 3);
    EXPECT_EQ(both.getRoot()->getChild(0)->tag, "name");
    EXPECT_EQ(both.getRoot()->getChild(1)->tag, "kept");
    EXPECT_EQ(both.getRoot()->getChild(2)->getAttributeValue("x"), "1");

    XMLNodeCreator pruning;
    pruning.setCreateAttributesFromPrimitiveChildren(false);
    ASSERT_EQ(pruning.parse(document, true), 0);
    EXPECT_EQ(pruning.getRoot()->getNumChildren(), 4);

    XMLNodeCreator making;
    making.setPruneEmptyTags(false);
    ASSERT_EQ(making.parse(document, true), 0);
    EXPECT_EQ(making.getRoot()->getAttributeValue("blank"), " ");
    EXPECT_EQ(making.getRoot()->getNumChildren(), 5);
    ASSERT_EQ(making.parse("<r/>", true), 0);
    EXPECT_EQ(making.getRoot()->tag, "r");
}

TEST(XMLReader, ReadsFilesAndNamesThemInMessages) {
    const std::string path = testing::TempDir() + "tessarin_reader_test.xml";
    std::ofstream(path) << "<a>\n</b>";
    RecordingAppender log("xml");
    PlainReader reader;
    EXPECT_EQ(reader.parse(path, false), AbstractXMLReader::MALFORMED);
    EXPECT_EQ(reader.getErrorReason(), "mismatched tag");
    EXPECT_EQ(reader.getErrorLine(), 2);
    EXPECT_EQ(reader.getErrorColumn(), 3);
    std::ofstream(path) << "<a/>";
    EXPECT_EQ(reader.parse(path, false), AbstractXMLReader::SUCCESS);
    std::remove(path.c_str());
    EXPECT_EQ(reader.parse(path, false), AbstractXMLReader::UNREADABLE);
    EXPECT_EQ(reader.getRoot(), nullptr);
    EXPECT_EQ(reader.parse(testing::TempDir(), false), AbstractXMLReader::UNREADABLE);
    reader.setSourceName("stream.xml");
    std::istringstream stream("<a");
    EXPECT_EQ(reader.parse(stream), AbstractXMLReader::MALFORMED);
    EXPECT_THAT(log.messages,
                ElementsAre(path + ":2:3: mismatched tag", path + ": cannot be opened: No such file or directory",
                            testing::StartsWith(testing::TempDir() + ": cannot be read: "),
                            "stream.xml:1:1: unclosed token"));
}

/// Gives a start and then blanks without end, or an exception after as many bytes as told.
struct EndlessBuffer : std::streambuf {
    explicit EndlessBuffer(const std::string& start, std::size_t limit = ~std::size_t(0)) : text(start), end(limit) {}

    std::streamsize xsgetn(char* target, std::streamsize size) override {
        const auto count = static_cast<std::size_t>(size);
        if (given + count > end) {
            throw std::runtime_error("plug pulled");
        }
        for (std::size_t i = 0; i < count; ++i) {
            target[i] = given + i < text.size() ? text[given + i] : ' ';
        }
        given += count;
        return size;
    }

    std::string text;
    std::size_t end;
    std::size_t given = 0;
};

TEST(XMLReader, ReadsStreamsInPiecesAndLetsNoExceptionOut) {
    RecordingAppender log("xml");
    PlainReader reader;
    EndlessBuffer endless("<a></b>");
    std::istream malformed(&endless);
    malformed.exceptions(std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
    EXPECT_EQ(reader.parse(malformed), AbstractXMLReader::MALFORMED);
    EXPECT_LE(endless.given, 1U << 18);

    EndlessBuffer breaking("<a>", 1 << 18);
    std::istream broken(&breaking);
    broken.exceptions(std::ios_base::badbit);
    EXPECT_EQ(reader.parse(broken), AbstractXMLReader::UNREADABLE);
    EXPECT_EQ(reader.getErrorReason(), "cannot be read: plug pulled");
    EXPECT_EQ(reader.getRoot(), nullptr);
    EXPECT_TRUE(broken.bad());
    EXPECT_EQ(reader.parse(broken), AbstractXMLReader::UNREADABLE);

    std::istringstream good("<a/>");
    good.exceptions(std::ios_base::eofbit | std::ios_base::failbit);
    EXPECT_EQ(reader.parse(good), AbstractXMLReader::SUCCESS);
    EXPECT_TRUE(good.eof());
    EXPECT_EQ(good.exceptions(), std::ios_base::eofbit | std::ios_base::failbit);
    std::ifstream unopened("");
    EXPECT_EQ(reader.parse(unopened), AbstractXMLReader::UNREADABLE);
    EXPECT_EQ(log.messages.size(), 4U);
}

/// Throws in the hook of that number.
struct ThrowingReader : AbstractXMLReader {
    void startDocument() override { count(); }
    void startElement(std::string, Attributes) override { count(); }
    void characters(const std::string&) override { count(); }
    void endElement() override { count(); }
    void endDocument(bool success) override {
        hasSucceeded = success;
        ++ends;
        count();
    }
    void count() {
        if (--countdown == 0) {
            throw std::runtime_error("hook failed");
        }
    }

    int countdown = 0;
    int ends = 0;
    bool hasSucceeded = false;
};

TEST(XMLReader, TurnsExceptionsOfHooksIntoItsResult) {
    const RecordingAppender log("xml");
    for (int hook = 1; hook <= 7; ++hook) {
        ThrowingReader reader;
        reader.countdown = hook;
        EXPECT_EQ(reader.parse("<a>t<b/></a>", true), AbstractXMLReader::ABORTED) << hook;
        EXPECT_EQ(reader.ends, 1);
        EXPECT_EQ(reader.countdown, hook == 7 ? 0 : -1) << "after a throw nothing is called but the end";
        EXPECT_EQ(reader.hasSucceeded, hook == 7);
        EXPECT_FALSE(reader.getErrorReason().empty());
    }
    ThrowingReader reader;
    EXPECT_EQ(reader.parse("<a>t<b/></a>", true), AbstractXMLReader::SUCCESS);
    EXPECT_EQ(log.messages.size(), 7U);
}

} // namespace

} // namespace tessarin::xml_parser
