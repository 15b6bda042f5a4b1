#include <xml_parser/XMLName.h>
#include <xml_parser/XMLText.h>

#include <expat.h>

#include <algorithm>

namespace tessarin::xml_parser {

namespace {

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':';
}

bool isPlainNameCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

/// Which of the letters of the world may stand in a name depends on the parser's edition of XML, so the parser is
/// asked.
bool isTag(const std::string& name) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    if (!parser) {
        return false;
    }
    const std::string document = '<' + name + "/>";
    const XML_Status status = XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_TRUE);
    XML_ParserFree(parser);
    return status == XML_STATUS_OK;
}

bool isNameCharacter(const std::string& character, bool isFirst) {
    if (static_cast<unsigned char>(character[0]) < 0x80) {
        return isFirst ? isLetter(character[0]) : isPlainNameCharacter(character[0]);
    }
    return isTag(isFirst ? character : '_' + character);
}

} // namespace

bool isPlainXMLName(const std::string& name) {
    return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), isPlainNameCharacter);
}

std::string toXMLName(const std::string& name) {
    std::string result;
    for (std::size_t index = 0; index < name.size();) {
        const std::size_t length = characterLength(name, index);
        const std::string character = name.substr(index, length);
        result += length != 0 && isNameCharacter(character, index == 0) ? character : "_";
        index += std::max<std::size_t>(length, 1);
    }
    return result.empty() ? "_" : result;
}

} // namespace tessarin::xml_parser
