#pragma once

#include <string>
#include <string_view>

namespace tessarin::xml_parser {

/// Where a string is written: between tags, in an attribute value, or between a tag and a child's tag where it must not
/// be taken for layout although it is white space alone.
enum class TextPlace { CONTENT, ATTRIBUTE, BLANK_CONTENT };

/// Appends text so that a reader gets it back byte for byte. What XML cannot hold becomes U+FFFD; the result is false
/// then.
bool appendEscaped(std::string& output, std::string_view text, TextPlace place);

/// How many bytes the UTF-8 character at an index has; 0 if there is none.
std::size_t characterLength(std::string_view text, std::size_t index);

/// True for the four characters that are white space to XML.
bool isBlank(char c);

/// True if there is nothing but white space.
bool isBlank(std::string_view text);

} // namespace tessarin::xml_parser
