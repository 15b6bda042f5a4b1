#include <xml_parser/ExpatParser.h>
#include <xml_parser/XMLText.h>

#include <algorithm>
#include <exception>
#include <new>
#include <string_view>
#include <utility>

namespace tessarin::xml_parser {

namespace {

constexpr int pieceSize = 1 << 16;

/// What foreign text a message repeats at most.
constexpr std::size_t longestName = 60;

/// Where expat has found a fault it doesn't say how long the faulty piece is.
constexpr int sizeOfSource = 4 * longestName;

bool isPredefined(std::string_view entity) {
    return entity == "amp" || entity == "lt" || entity == "gt" || entity == "quot" || entity == "apos";
}

std::string shortened(std::string_view name) {
    if (name.size() <= longestName) {
        return std::string(name);
    }
    std::size_t end = longestName;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) {
        --end;
    }
    return std::string(name.substr(0, end)) + "...";
}

/// A document's own text, with '?' for what isn't UTF-8, and for each code unit of UTF-16 outside ASCII.
std::string toUtf8(std::string_view bytes) {
    const bool isBigEndian = bytes[0] == 0;
    const bool isWide = isBigEndian || (bytes.size() > 1 && bytes[1] == 0);
    std::string result;
    for (std::size_t i = 0; isWide && i + 2 <= bytes.size(); i += 2) {
        const char low = bytes[isBigEndian ? i + 1 : i];
        const char high = bytes[isBigEndian ? i : i + 1];
        result += high == 0 && static_cast<unsigned char>(low) < 0x80 ? low : '?';
    }
    for (std::size_t i = 0; !isWide && i < bytes.size();) {
        const std::size_t length = characterLength(bytes, i);
        result += length == 0 ? "?" : bytes.substr(i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return result;
}

/// What stands before the first of these characters.
std::string upTo(const std::string& text, const char* ends) {
    return shortened(std::string_view(text).substr(0, text.find_first_of(ends)));
}

} // namespace

ExpatParser::~ExpatParser() {
    if (_parser) {
        XML_ParserFree(_parser);
    }
}

bool ExpatParser::createParser() {
    _parser = XML_ParserCreate(nullptr);
    if (!_parser) {
        return false;
    }
    XML_SetUserData(_parser, this);
    XML_SetXmlDeclHandler(_parser, onXmlDeclaration);
    XML_SetElementHandler(_parser, onStartElement, onEndElement);
    XML_SetCharacterDataHandler(_parser, onCharacters);
    XML_SetCdataSectionHandler(_parser, onStartCdata, onEndCdata);
    XML_SetStartDoctypeDeclHandler(_parser, onStartDoctype);
    XML_SetEntityDeclHandler(_parser, onEntityDeclaration);
    XML_SetSkippedEntityHandler(_parser, onSkippedEntity);
    return true;
}

AbstractXMLReader::Result ExpatParser::read(const std::function<std::size_t(char*, std::size_t)>& source) {
    if (!createParser()) {
        throw std::bad_alloc();
    }
    for (std::size_t count = 1; count > 0;) {
        void* const buffer = XML_GetBuffer(_parser, pieceSize);
        if (!buffer) {
            return finishWithExpatError();
        }
        try {
            count = source(static_cast<char*>(buffer), pieceSize);
        } catch (const std::exception& exception) {
            _reason = exception.what();
            return AbstractXMLReader::UNREADABLE;
        }
        if (XML_ParseBuffer(_parser, static_cast<int>(count), count == 0) != XML_STATUS_OK) {
            return finishWithExpatError();
        }
    }
    return AbstractXMLReader::SUCCESS;
}

AbstractXMLReader::Result ExpatParser::finishWithExpatError() {
    if (_result != AbstractXMLReader::SUCCESS) {
        return _result;
    }
    const XML_Error error = XML_GetErrorCode(_parser);
    _reason = describeError(error);
    if (error == XML_ERROR_NO_MEMORY) {
        return AbstractXMLReader::ABORTED;
    }
    _line = static_cast<int>(XML_GetCurrentLineNumber(_parser));
    _column = static_cast<int>(XML_GetCurrentColumnNumber(_parser)) + 1;
    return AbstractXMLReader::MALFORMED;
}

/// What expat says, and what a person has to look for.
std::string ExpatParser::describeError(XML_Error error) const {
    std::string reason = XML_ErrorString(error);
    switch (error) {
    case XML_ERROR_NO_MEMORY:
        return reason;
    case XML_ERROR_UNKNOWN_ENCODING:
    case XML_ERROR_INCORRECT_ENCODING:
        return _encoding.empty() ? reason : reason + ": " + shortened(_encoding);
    case XML_ERROR_UNDEFINED_ENTITY:
        return reason + ": " + upTo(getSource(sizeOfSource), ";") + ';';
    case XML_ERROR_DUPLICATE_ATTRIBUTE:
        return reason + ": " + upTo(getSource(sizeOfSource), "= \t\r\n");
    case XML_ERROR_TAG_MISMATCH:
        return reason + ": </" + upTo(getSource(sizeOfSource), "> \t\r\n") + "> stands where " + describeInnermost() +
               " is to be closed";
    case XML_ERROR_NO_ELEMENTS:
        return _open.empty() ? reason : "the document ends where " + describeInnermost() + " is to be closed";
    default:
        return _open.empty() ? reason : reason + " inside " + describeInnermost();
    }
}

/// The innermost of the open elements, which must be there.
std::string ExpatParser::describeInnermost() const {
    const OpenElement& element = _open.back();
    return '<' + shortened(std::string_view(_openNames).substr(element.nameBegin)) + "> of line " +
           std::to_string(element.line);
}

int ExpatParser::getCurrentLine() const {
    return static_cast<int>(XML_GetCurrentLineNumber(_parser));
}

void ExpatParser::stop(AbstractXMLReader::Result result, const char* reason) noexcept {
    XML_StopParser(_parser, XML_FALSE);
    _result = result;
    _line = static_cast<int>(XML_GetCurrentLineNumber(_parser));
    _column = static_cast<int>(XML_GetCurrentColumnNumber(_parser)) + 1;
    try {
        _reason = reason;
    } catch (...) {
    }
}

template <typename Call>
void ExpatParser::guarded(void* self, const Call& call) noexcept {
    ExpatParser& parser = *static_cast<ExpatParser*>(self);
    // Some handlers are still called after a stop.
    if (parser._result != AbstractXMLReader::SUCCESS) {
        return;
    }
    try {
        call(parser);
    } catch (const std::bad_alloc&) {
        parser.stop(AbstractXMLReader::ABORTED, "out of memory");
    } catch (const std::exception& exception) {
        parser.stop(AbstractXMLReader::ABORTED, exception.what());
    } catch (...) {
        parser.stop(AbstractXMLReader::ABORTED, "exception while reading");
    }
}

void XMLCALL ExpatParser::onXmlDeclaration(void* self, const XML_Char*, const XML_Char* encoding, int) {
    guarded(self, [&](ExpatParser& parser) { parser._encoding = encoding ? encoding : ""; });
}

void XMLCALL ExpatParser::onStartElement(void* self, const XML_Char* name, const XML_Char** attributes) {
    guarded(self, [&](ExpatParser& parser) { parser.startElement(name, attributes); });
}

void ExpatParser::startElement(const XML_Char* name, const XML_Char** attributes) {
    if (_open.size() == static_cast<std::size_t>(_reader.getMaxDepth())) {
        const std::string limit = std::to_string(_reader.getMaxDepth());
        stop(AbstractXMLReader::REFUSED, ("elements are nested deeper than " + limit).c_str());
        return;
    }
    const std::string entity = _hasDoctype ? findUnknownEntity() : std::string();
    if (!entity.empty()) {
        stop(AbstractXMLReader::MALFORMED, ("undefined entity: " + entity).c_str());
        return;
    }
    passTextOn(false);
    _open.push_back({_openNames.size(), getCurrentLine()});
    _openNames += name;
    AbstractXMLReader::Attributes values;
    // Behind the attributes that stand in the tag come the defaults of a document type declaration.
    const int count = XML_GetSpecifiedAttributeCount(_parser);
    for (int i = 0; i < count; i += 2) {
        values.emplace(attributes[i], attributes[i + 1]);
    }
    _reader.startElement(name, std::move(values));
    _isAfterStartTag = true;
}

void XMLCALL ExpatParser::onEndElement(void* self, const XML_Char*) {
    guarded(self, [](ExpatParser& parser) {
        parser.passTextOn(parser._isAfterStartTag);
        parser._isAfterStartTag = false;
        parser._openNames.resize(parser._open.back().nameBegin);
        parser._open.pop_back();
        parser._reader.endElement();
    });
}

void XMLCALL ExpatParser::onCharacters(void* self, const XML_Char* text, int length) {
    guarded(self, [&](ExpatParser& parser) { parser.addCharacters(text, static_cast<std::size_t>(length)); });
}

void ExpatParser::addCharacters(const XML_Char* text, std::size_t length) {
    const std::string_view characters(text, length);
    _text.append(characters);
    // A character reference is reported by itself.
    _isSignificant = _isSignificant || _isInCdata || !isBlank(characters) ||
                     (length == 1 && getSourceOfEvent().compare(0, 1, "&") == 0);
}

void XMLCALL ExpatParser::onStartCdata(void* self) {
    static_cast<ExpatParser*>(self)->_isInCdata = true;
}

void XMLCALL ExpatParser::onEndCdata(void* self) {
    static_cast<ExpatParser*>(self)->_isInCdata = false;
}

/// Hands the characters since the last tag on; without isBlankKept not those that are only layout.
void ExpatParser::passTextOn(bool isBlankKept) {
    if (!_text.empty() && (_isSignificant || isBlankKept)) {
        _reader.characters(_text);
    }
    _text.clear();
    _isSignificant = false;
}

void XMLCALL ExpatParser::onStartDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    static_cast<ExpatParser*>(self)->_hasDoctype = true;
}

void XMLCALL ExpatParser::onEntityDeclaration(void* self, const XML_Char* name, int, const XML_Char*, int,
                                              const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*) {
    guarded(self, [&](ExpatParser& parser) {
        parser.stop(AbstractXMLReader::REFUSED,
                    ("documents that declare entities are refused: " + shortened(name)).c_str());
    });
}

void XMLCALL ExpatParser::onSkippedEntity(void* self, const XML_Char* name, int) {
    guarded(self, [&](ExpatParser& parser) {
        parser.stop(AbstractXMLReader::MALFORMED, ("undefined entity: &" + shortened(name) + ';').c_str());
    });
}

/// The document's own text of what is being reported.
std::string ExpatParser::getSourceOfEvent() const {
    return getSource(XML_GetCurrentByteCount(_parser));
}

/// As many bytes of the document's own text as told, or as are there, from what is being reported on.
std::string ExpatParser::getSource(int count) const {
    int offset = 0;
    int size = 0;
    const char* const context = XML_GetInputContext(_parser, &offset, &size);
    count = std::min(count, size - offset);
    return context && count > 0 ? toUtf8(std::string_view(context + offset, static_cast<std::size_t>(count)))
                                : std::string();
}

/// Once a document has a type declaration, expat takes unknown entities in attribute values for declared elsewhere and
/// leaves them out without a word. Empty if there is none in the tag.
std::string ExpatParser::findUnknownEntity() const {
    const std::string tag = getSourceOfEvent();
    for (std::size_t start = tag.find('&'); start != std::string::npos; start = tag.find('&', start + 1)) {
        const std::size_t end = tag.find(';', start);
        const std::string_view entity = std::string_view(tag).substr(start + 1, end - start - 1);
        if (entity.substr(0, 1) != "#" && !isPredefined(entity)) {
            return '&' + shortened(entity) + ';';
        }
    }
    return std::string();
}

} // namespace tessarin::xml_parser
