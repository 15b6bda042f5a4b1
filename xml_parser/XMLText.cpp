#include <xml_parser/XMLText.h>

#include <algorithm>

namespace tessarin::xml_parser {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

std::string reference(char c) {
    return "&#" + std::to_string(static_cast<int>(c)) + ';';
}

bool appendEscapedByte(std::string& output, char c, TextPlace place) {
    switch (c) {
    case '&':
        output += "&amp;";
        return true;
    case '<':
        output += "&lt;";
        return true;
    case '>':
        output += "&gt;";
        return true;
    case '"':
        output += place == TextPlace::ATTRIBUTE ? "&quot;" : "\"";
        return true;
    case '\r': // a reader takes a plain one for the end of a line
        output += reference(c);
        return true;
    case '\n':
    case '\t':
    case ' ':
        if (place == TextPlace::BLANK_CONTENT || (place == TextPlace::ATTRIBUTE && c != ' ')) {
            output += reference(c);
        } else {
            output += c;
        }
        return true;
    default:
        output += replacementCharacter;
        return false;
    }
}

bool isPlain(char c) {
    return static_cast<unsigned char>(c) > 0x20 && static_cast<unsigned char>(c) < 0x80 && c != '&' && c != '<' &&
           c != '>' && c != '"';
}

bool isNoCharacter(std::string_view character) {
    return character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF"; // U+FFFE, U+FFFF
}

} // namespace

bool isBlank(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

bool isBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return isBlank(c); });
}

std::size_t characterLength(std::string_view text, std::size_t index) {
    const auto byte = [&](std::size_t i) -> unsigned {
        return index + i < text.size() ? static_cast<unsigned char>(text[index + i]) : 0U;
    };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return index < text.size() ? 1 : 0;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    // The second byte tells longer forms than needed, surrogates, and what lies beyond U+10FFFF.
    const unsigned second = byte(1);
    const bool isWrong = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                         (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return isWrong ? 0 : length;
}

bool appendEscaped(std::string& output, std::string_view text, TextPlace place) {
    bool isComplete = true;
    std::size_t index = 0;
    while (index < text.size()) {
        const std::size_t start = index;
        while (index < text.size() && isPlain(text[index])) {
            ++index;
        }
        output.append(text.substr(start, index - start));
        if (index == text.size()) {
            break;
        }
        if (static_cast<unsigned char>(text[index]) < 0x80) {
            isComplete = appendEscapedByte(output, text[index], place) && isComplete;
            ++index;
            continue;
        }
        const std::size_t length = characterLength(text, index);
        const std::string_view character = text.substr(index, length);
        if (length == 0 || isNoCharacter(character)) {
            output += replacementCharacter;
            isComplete = false;
        } else {
            output.append(character);
        }
        index += std::max<std::size_t>(length, 1);
    }
    return isComplete;
}

} // namespace tessarin::xml_parser
