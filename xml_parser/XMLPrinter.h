#pragma once

#include <xml_parser/XMLText.h>

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin::xml_parser {

class XMLNode;

/// Prints one branch to a stream, piece by piece and without recursion.
///
/// Line breaks and indentation stand only where a reader takes them for layout. So text of an element with children
/// runs up to its first child's tag without a line break, and if it is white space alone, as character references.
class XMLPrinter {
public:
    explicit XMLPrinter(std::ostream& stream) : _stream(stream) {}

    void print(const XMLNode& root, int indent);

private:
    struct OpenElement {
        const XMLNode* node;
        int nextChild;
    };

    void beginElement(const XMLNode& node, bool isIndented);
    void endElement();
    void writeAttributes(const XMLNode& node);
    void writeEscaped(const XMLNode& node, std::string_view text, TextPlace place);
    void writeIndentation();
    void flush();

    const std::string& getName(const XMLNode& node, const std::string& name);
    void noteReplacement(const XMLNode& node);
    void tellFaults(const XMLNode& root);

    std::ostream& _stream;
    std::string _buffer;
    int _indent = 0;
    std::vector<OpenElement> _open;
    std::map<std::string, std::string> _names;
    std::string _firstReplacement;
    bool _hasReplacements = false;
    std::size_t _depth = 0;
};

} // namespace tessarin::xml_parser
