#include <logging/PrintableText.h>

#include <cstdio>

namespace tessarin::logging {

namespace {

constexpr std::size_t longestQuote = 80;

struct Character {
    char32_t code;
    std::size_t length; // in bytes; 0 for a byte that is no UTF-8
};

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The character at the begin of a text, which isn't empty.
Character decode(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > text.size()) {
        return {lead, 0};
    }
    char32_t code = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(text[i])) {
            return {lead, 0};
        }
        code = code << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    const bool isLongerThanNeeded = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool isNoCharacter = (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF;
    return isLongerThanNeeded || isNoCharacter ? Character{lead, 0} : Character{code, length};
}

bool isControl(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x061C || code == 0x200E || code == 0x200F ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

std::string escape(const char* format, char32_t code) {
    char text[16] = "";
    std::snprintf(text, sizeof(text), format, static_cast<unsigned>(code));
    return text;
}

} // namespace

std::string printableText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Character character = decode(text);
        const std::size_t length = character.length == 0 ? 1 : character.length;
        if (text[0] == '\n') {
            result += "\\n";
        } else if (character.length == 0 || (isControl(character.code) && length == 1)) {
            result += escape("\\x%02x", character.code);
        } else if (isControl(character.code)) {
            result += escape("\\u%04x", character.code);
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return result;
}

std::string quotedText(std::string_view text) {
    std::size_t end = text.size();
    if (end > longestQuote) {
        end = longestQuote;
        for (int i = 0; i < 3 && isContinuation(text[end]); ++i) {
            --end;
        }
    }
    return '"' + std::string(text.substr(0, end)) + (end < text.size() ? "...\"" : "\"");
}

} // namespace tessarin::logging
