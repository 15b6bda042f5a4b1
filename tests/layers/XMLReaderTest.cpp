#include <tests/layers/XMLTest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace tessarin::xml_parser {

namespace {

std::string toUtf16(const std::string& ascii, bool isBigEndian) {
    std::string result = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii)
        result += isBigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    return result;
}

std::string nested(int depth) {
    std::string result;
    for (int i = 0; i < depth; ++i)
        result = "<n>" + result + "</n>";
    return result;
}

/// The tree of a text, or what was wrong with it.
std::string read(const std::string& text, XMLNodeCreator&& reader = PlainReader()) {
    return reader.parse(text, true) == 0 ? describe(*reader.getRoot()) : reader.getErrorMessage();
}

TEST(XMLReader, ReadsADocumentWrittenByHand) {
    const std::string document =
        "<?xml version='1.0'?>\r\n<!DOCTYPE a SYSTEM 'a.dtd' [<!ATTLIST a x CDATA 'default' y CDATA 'z'>]>\n"
        "<a y = 'tr&#117;ck'>\r\n\t<!-- placed --> <b>\n    <c>1.5 0\r\n-2</c>\n  </b>\n"
        "  <d> a <b/> c<![CDATA[ <&> ]]> </d>\n"
        "  <e> </e><f>\n<x/>&#32;\n</f><g>\n<![CDATA[ ]]><x/></g>\n</a>\n";
    for (const std::string& text : {document, toUtf16(document, true), toUtf16(document, false)})
        EXPECT_EQ(read(text), R"(<a y="truck"<b<c "1.5 0\n-2">><d " a  c <&>  "<b>><e " "><f " \n"<x>><g "\n "<x>>>)");
    PlainReader reader;
    ASSERT_EQ(reader.parse("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xFC</a>", true), 0);
    EXPECT_EQ(reader.getRoot()->text, "\xC3\xBC");
    EXPECT_EQ(read(nested(1000)).size(), 3000U);
}

TEST(XMLReader, RefusesTheWholeDocumentWithOneLine) {
    constexpr int malformed = AbstractXMLReader::MALFORMED;
    constexpr int refused = AbstractXMLReader::REFUSED;
    struct {
        std::string document;
        int result;
        const char* message;
    } const refusals[] = {
        {"", malformed, "line 1, column 1: no element found"},
        {"<a>\n <b>\n</a>", malformed, "line 3, column 3: mismatched tag"},
        {"<a/><a/>", malformed, "line 1, column 5: junk after document element"},
        {"<a>\xC3\x28</a>", malformed, "line 1, column 4: not well-formed (invalid token)"},
        {"<a x='1' x='2'/>", malformed, "line 1, column 10: duplicate attribute"},
        {"<?xml version='1.0' encoding='x-none'?><a/>", malformed, "line 1, column 31: unknown encoding"},
        {"<a>&b;</a>", malformed, "line 1, column 4: undefined entity"},
        {"<!DOCTYPE a SYSTEM 'a'><a>\n&b;</a>", malformed, "line 2, column 1: undefined entity"},
        {"<!DOCTYPE a SYSTEM 'a'><a x='&#9;'>\n<c d='&amp;' e=' &b;'/></a>", malformed,
         "line 2, column 1: undefined entity"},
        {toUtf16("<!DOCTYPE a SYSTEM 'a'>\n<a b='&c;'/>", false), malformed, "line 2, column 1: undefined entity"},
        {"<!DOCTYPE a [%p;<!ENTITY b 'c'>]>\n<a b='&b;'/>", malformed, "line 2, column 1: undefined entity"},
        {"<!DOCTYPE a [\n<!ENTITY b 'bb'>\n<!ENTITY c '&b;&b;'>]><a>&c;</a>", refused,
         "line 2, column 12: documents that declare entities are refused: b"},
        {"<!DOCTYPE a [<!ENTITY b SYSTEM '/etc/hostname'>]><a>&b;</a>", refused,
         "line 1, column 47: documents that declare entities are refused: b"},
        {nested(1001), refused, "line 1, column 3001: elements are nested deeper than 1000"},
    };
    LogCapture log("xml");
    PlainReader reader;
    for (const auto& refusal : refusals) {
        ASSERT_EQ(reader.parse("<before/>", true), AbstractXMLReader::SUCCESS);
        EXPECT_TRUE(reader.getErrorMessage().empty() && reader.getErrorLine() == 0);
        EXPECT_EQ(reader.parse(refusal.document, true), refusal.result) << refusal.document;
        EXPECT_EQ(reader.getRoot(), nullptr) << refusal.document;
        EXPECT_EQ(reader.getErrorMessage(), refusal.message) << refusal.document;
        EXPECT_THAT(log.take(), ElementsAre(std::string("300 ") + refusal.message));
    }
    reader.setMaxDepth(2);
    EXPECT_EQ(reader.parse("<a><b/><b/></a>", true), AbstractXMLReader::SUCCESS);
    EXPECT_EQ(reader.parse("<a><b><c/></b></a>", true), AbstractXMLReader::REFUSED);
}

TEST(XMLReader, SimplifiesUnlessToldNotTo) {
    const std::string document = "<r name='n'><name>other</name><size>1 2</size><none/><blank> </blank>"
                                 "<holder><none/></holder><kept flag=''/><deep><x>1</x></deep></r>";
    XMLNodeCreator pruning, making;
    pruning.setCreateAttributesFromPrimitiveChildren(false);
    making.setPruneEmptyTags(false);
    EXPECT_EQ(read(document, XMLNodeCreator()), R"(<r name="n" size="1 2"<name "other"><kept flag=""><deep x="1">>)");
    EXPECT_EQ(read(document, std::move(pruning)),
              R"(<r name="n"<name "other"><size "1 2"><kept flag=""><deep<x "1">>>)");
    EXPECT_EQ(read(document, std::move(making)),
              R"(<r blank=" " name="n" size="1 2"<name "other"><none><holder<none>><kept flag=""><deep x="1">>)");
}

/// Gives a start and then blanks without end, or an exception after as many bytes as told.
struct EndlessBuffer : std::streambuf {
    explicit EndlessBuffer(const std::string& start, std::size_t limit = ~std::size_t(0)) : text(start), end(limit) {}

    std::streamsize xsgetn(char* target, std::streamsize size) override {
        const auto count = static_cast<std::size_t>(size);
        if (given + count > end)
            throw std::runtime_error("plug pulled");
        for (std::size_t i = 0; i < count; ++i)
            target[i] = given + i < text.size() ? text[given + i] : ' ';
        given += count;
        return size;
    }

    std::string text;
    std::size_t end;
    std::size_t given = 0;
};

TEST(XMLReader, ReadsFilesAndStreamsInPiecesAndLetsNoExceptionOut) {
    const std::string folder = testing::TempDir();
    const std::string path = folder + "tessarin_reader_test.xml";
    LogCapture log("xml");
    PlainReader reader;
    std::ofstream(path) << "<a>\n</b>";
    EXPECT_EQ(reader.parse(path, false), AbstractXMLReader::MALFORMED);
    EXPECT_EQ(reader.getErrorReason(), "mismatched tag");
    EXPECT_TRUE(reader.getErrorLine() == 2 && reader.getErrorColumn() == 3);
    std::ofstream(path) << "<a/>";
    EXPECT_EQ(reader.parse(path, false), AbstractXMLReader::SUCCESS);
    std::remove(path.c_str());
    EXPECT_EQ(reader.parse(path, false), AbstractXMLReader::UNREADABLE);
    EXPECT_EQ(reader.getRoot(), nullptr);
    EXPECT_EQ(reader.parse(folder, false), AbstractXMLReader::UNREADABLE);

    EndlessBuffer endless("<a></b>"), breaking("<a>", 1 << 18);
    std::istream malformed(&endless), broken(&breaking);
    malformed.exceptions(std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
    broken.exceptions(std::ios_base::badbit);
    reader.setSourceName("stream.xml");
    EXPECT_EQ(reader.parse(malformed), AbstractXMLReader::MALFORMED);
    EXPECT_LE(endless.given, 1U << 18);
    EXPECT_EQ(reader.parse(broken), AbstractXMLReader::UNREADABLE);
    EXPECT_TRUE(broken.bad() && !reader.getRoot());
    EXPECT_EQ(reader.parse(broken), AbstractXMLReader::UNREADABLE);
    EXPECT_THAT(log.takeErrors(),
                ElementsAre(path + ":2:3: mismatched tag", path + ": cannot be opened: No such file or directory",
                            testing::StartsWith(folder + ": cannot be read: "), "stream.xml:1:6: mismatched tag",
                            "stream.xml: cannot be read: plug pulled",
                            "stream.xml: cannot be read: the stream has failed before"));

    std::istringstream good("<a/>");
    good.exceptions(std::ios_base::eofbit);
    EXPECT_EQ(reader.parse(good), AbstractXMLReader::SUCCESS);
    EXPECT_TRUE(good.eof() && good.exceptions() == std::ios_base::eofbit);
}

/// Throws in the hook of that number.
struct ThrowingReader : AbstractXMLReader {
    void startDocument() override { count(); }
    void startElement(std::string, Attributes) override { count(); }
    void characters(const std::string&) override { count(); }
    void endElement() override { count(); }
    void endDocument(bool success) override {
        ends += success ? "success" : "failure";
        count();
    }
    void count() {
        if (--countdown == 0)
            throw std::runtime_error("hook failed");
    }

    int countdown = 0;
    std::string ends;
};

TEST(XMLReader, TurnsExceptionsOfHooksIntoItsResult) {
    LogCapture log("xml");
    for (int hook = 1; hook <= 8; ++hook) {
        ThrowingReader reader;
        reader.countdown = hook;
        EXPECT_EQ(reader.parse("<a>t<b/></a>", true),
                  hook < 8 ? AbstractXMLReader::ABORTED : AbstractXMLReader::SUCCESS);
        EXPECT_EQ(reader.ends, hook < 7 ? "failure" : "success");
        EXPECT_EQ(reader.countdown, hook < 7 ? -1 : hook - 7) << "after a throw nothing is called but the end";
        EXPECT_EQ(log.take().size(), hook < 8 ? 1U : 0U);
    }
}

} // namespace

} // namespace tessarin::xml_parser
