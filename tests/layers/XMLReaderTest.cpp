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
        std::string message;
    } const refusals[] = {
        {"", malformed, "no element found (line 1, column 1)"},
        {"<a>\n <b c=''>\n <d/>", malformed,
         "the document ends where <b> of line 2 is to be closed (line 3, column 6)"},
        {"<a>\n <b>\n</a >", malformed,
         "mismatched tag: </a> stands where <b> of line 2 is to be closed (line 3, column 3)"},
        {toUtf16("<a>\n<b></c>", true), malformed,
         "mismatched tag: </c> stands where <b> of line 2 is to be closed (line 2, column 6)"},
        {"<f\xC3\xBCr></f\xC3\xBC" + std::string(5000, 'r') + ">", malformed,
         ("mismatched tag: </f\xC3\xBC" + std::string(57, 'r') +
          "...> stands where <f\xC3\xBCr> of line 1 is to be closed (line 1, column 8)")},
        {"<a/><a/>", malformed, "junk after document element (line 1, column 5)"},
        {"<a>\xC3\x28</a>", malformed, "not well-formed (invalid token) inside <a> of line 1 (line 1, column 4)"},
        {"<a x='1' x ='2'/>", malformed, "duplicate attribute: x (line 1, column 10)"},
        {"<?xml version='1.0' encoding='x-none'?><a/>", malformed, "unknown encoding: x-none (line 1, column 31)"},
        {"<a>&b;</a>", malformed, "undefined entity: &b; (line 1, column 4)"},
        {"<!DOCTYPE a SYSTEM 'a'><a>\n&b;</a>", malformed, "undefined entity: &b; (line 2, column 1)"},
        {"<!DOCTYPE a SYSTEM 'a'><a x='&#9;'>\n<c d='&amp;' e=' &b;'/></a>", malformed,
         "undefined entity: &b; (line 2, column 1)"},
        {toUtf16("<!DOCTYPE a SYSTEM 'a'>\n<a b='&c;'/>", false), malformed,
         "undefined entity: &c; (line 2, column 1)"},
        {"<!DOCTYPE a [%p;<!ENTITY b 'c'>]>\n<a b='&b;'/>", malformed, "undefined entity: &b; (line 2, column 1)"},
        {"<!DOCTYPE a [\n<!ENTITY b 'bb'>\n<!ENTITY c '&b;&b;'>]><a>&c;</a>", refused,
         "documents that declare entities are refused: b (line 2, column 12)"},
        {"<!DOCTYPE a [<!ENTITY b SYSTEM '/etc/hostname'>]><a>&b;</a>", refused,
         "documents that declare entities are refused: b (line 1, column 47)"},
        {nested(1001), refused, "elements are nested deeper than 1000 (line 1, column 3001)"},
    };
    LogCapture log("xml");
    PlainReader reader;
    for (const auto& refusal : refusals) {
        ASSERT_EQ(reader.parse("<before/>", true), AbstractXMLReader::SUCCESS);
        EXPECT_TRUE(reader.getErrorMessage().empty() && reader.getErrorLine() == 0);
        EXPECT_EQ(reader.parse(refusal.document, true), refusal.result) << refusal.document;
        EXPECT_EQ(reader.getRoot(), nullptr) << refusal.document;
        EXPECT_EQ(reader.getErrorMessage(), refusal.message) << refusal.document;
        EXPECT_THAT(log.take(), ElementsAre("300 " + refusal.message));
    }
    reader.setMaxDepth(2);
    EXPECT_EQ(reader.parse("<a><b/><b/></a>", true), AbstractXMLReader::SUCCESS);
    EXPECT_EQ(reader.parse("<a><b><c/></b></a>", true), AbstractXMLReader::REFUSED);
}

/// The places of all elements, in document order.
void addPlaces(const XMLNode& node, std::string& places) {
    places += node.getPlace() + '|';
    for (int i = 0; i < node.getNumChildren(); ++i)
        addPlaces(*node.getChild(i), places);
}

TEST(XMLReader, ElementsKnowTheirPlacesAndKeepThemInOtherTrees) {
    const std::string document =
        "<?xml version='1.0'?>\n<a\n x='\n'>\r\n<!--\n\n--><b/><c><![CDATA[\n]]>\n<d/></c></a>";
    XMLNode kept("kept", nullptr);
    for (const std::string& text : {document, toUtf16(document, true), std::string(200000, '\n').insert(0, document)}) {
        PlainReader reader, other;
        std::istringstream stream(text);
        std::string places;
        ASSERT_EQ(reader.parse(text, true) + other.parse(stream), 0);
        addPlaces(*reader.getRoot(), places);
        EXPECT_EQ(places, "line 2|line 7|line 7|line 9|");
        reader.setSourceName("crane.xml");
        ASSERT_EQ(reader.parse("<a>" + std::string(100000, '\n') + "<b/></a>", true), 0);
        XMLNode* const moved = reader.getRoot()->getChild(0);
        other.getRoot()->addChild(moved);
        kept.addChild("copy")->setPlaceOf(*other.getRoot()->getChild(2));
        EXPECT_EQ(moved->getPlace() + ' ' + std::to_string(moved->getLine()), "crane.xml:100001 100001");
    }
    std::string places;
    addPlaces(kept, places);
    EXPECT_EQ(places, "|crane.xml:100001|crane.xml:100001|crane.xml:100001|") << "the readers are gone";
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
    const std::string mismatch = "mismatched tag: </b> stands where <a> of line 1 is to be closed";
    std::ofstream(path) << "<a>\n</b>";
    EXPECT_EQ(reader.parse(path, false), AbstractXMLReader::MALFORMED);
    EXPECT_EQ(reader.getErrorReason(), mismatch);
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
                ElementsAre(mismatch + " (" + path + ":2:3)", path + ": cannot be opened: No such file or directory",
                            testing::StartsWith(folder + ": cannot be read: "), mismatch + " (stream.xml:1:6)",
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
