#include <xml_parser/AbstractXMLReader.h>
#include <xml_parser/XMLName.h>
#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLPrinter.h>

#include <logging/Log.h>

#include <algorithm>
#include <ostream>
#include <set>

namespace tessarin::xml_parser {

namespace {

using logging::Logger;

log4cpp::Category* const category = Logger::instance()->getCategory("xml", true);

constexpr std::size_t pieceSize = 1 << 16;

// Deeper elements are indented no further, or a deep branch would print as mostly blanks.
constexpr int maxIndent = 24;

} // namespace

void XMLPrinter::print(const XMLNode& root, int indent) {
    _indent = std::max(indent, 0);
    beginElement(root, true);
    while (!_open.empty() && _stream) {
        OpenElement& top = _open.back();
        if (top.nextChild == top.node->getNumChildren()) {
            endElement();
            continue;
        }
        const bool isAfterText = top.nextChild == 0 && !top.node->text.empty();
        const XMLNode* child = top.node->getChild(top.nextChild++);
        beginElement(*child, !isAfterText);
    }
    flush();
    tellFaults(root);
}

void XMLPrinter::tellFaults(const XMLNode& root) {
    if (_hasReplacements) {
        TESSARIN_LOG(category, Logger::errorLevel,
                     "The branch <" << root.tag << "> holds what XML cannot, first in <" << _firstReplacement
                                    << ">: printed with U+FFFD in texts and values, '_' in names");
    }
    if (_depth > static_cast<std::size_t>(AbstractXMLReader::defaultMaxDepth)) {
        TESSARIN_LOG(category, Logger::errorLevel,
                     "The branch <" << root.tag << "> is nested " << _depth
                                    << " elements deep: it is printed whole, but "
                                    << "readers take " << AbstractXMLReader::defaultMaxDepth
                                    << " unless they are told otherwise");
    }
}

void XMLPrinter::beginElement(const XMLNode& node, bool isIndented) {
    if (isIndented) {
        writeIndentation();
    }
    const std::string& tag = getName(node, node.tag);
    _depth = std::max(_depth, _open.size() + 1);
    _buffer += '<';
    _buffer += tag;
    writeAttributes(node);
    if (node.getNumChildren() > 0) {
        _buffer += '>';
        if (node.text.empty()) {
            _buffer += '\n';
        } else {
            writeEscaped(node, node.text, isBlank(node.text) ? TextPlace::BLANK_CONTENT : TextPlace::CONTENT);
        }
        _open.push_back({&node, 0});
    } else if (node.text.empty()) {
        _buffer += "/>\n";
    } else {
        _buffer += '>';
        writeEscaped(node, node.text, TextPlace::CONTENT);
        _buffer += "</";
        _buffer += tag;
        _buffer += ">\n";
    }
    if (_buffer.size() >= pieceSize) {
        flush();
    }
}

void XMLPrinter::endElement() {
    const XMLNode& node = *_open.back().node;
    _open.pop_back();
    writeIndentation();
    _buffer += "</";
    _buffer += getName(node, node.tag);
    _buffer += ">\n";
}

void XMLPrinter::writeAttributes(const XMLNode& node) {
    std::set<std::string> replacedNames;
    int number = 1;
    for (const auto& [name, value] : node.attributes) {
        _buffer += ' ';
        const std::string& goodName = getName(node, name);
        if (goodName == name) {
            _buffer += name;
        } else {
            std::string freeName = goodName;
            while (node.attributes.count(freeName) != 0 || !replacedNames.insert(freeName).second) {
                freeName = goodName + std::to_string(++number);
            }
            _buffer += freeName;
        }
        _buffer += "=\"";
        writeEscaped(node, value, TextPlace::ATTRIBUTE);
        _buffer += '"';
    }
}

void XMLPrinter::writeEscaped(const XMLNode& node, std::string_view text, TextPlace place) {
    while (!text.empty()) {
        std::size_t size = std::min(pieceSize, text.size());
        // Not through the middle of a character, which has three further bytes at most.
        for (int i = 0; i < 3 && size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80; ++i) {
            ++size;
        }
        if (!appendEscaped(_buffer, text.substr(0, size), place)) {
            noteReplacement(node);
        }
        text.remove_prefix(size);
        if (_buffer.size() >= pieceSize) {
            flush();
        }
    }
}

void XMLPrinter::writeIndentation() {
    const std::size_t depth = _open.size() + static_cast<std::size_t>(std::min(_indent, maxIndent));
    _buffer.append(2 * std::min<std::size_t>(depth, maxIndent), ' ');
}

void XMLPrinter::flush() {
    _stream.write(_buffer.data(), static_cast<std::streamsize>(_buffer.size()));
    _buffer.clear();
}

const std::string& XMLPrinter::getName(const XMLNode& node, const std::string& name) {
    if (isPlainXMLName(name)) {
        return name;
    }
    auto known = _names.find(name);
    if (known == _names.end()) {
        known = _names.emplace(name, toXMLName(name)).first;
    }
    if (known->second != name) {
        noteReplacement(node);
    }
    return known->second;
}

void XMLPrinter::noteReplacement(const XMLNode& node) {
    if (!_hasReplacements) {
        _hasReplacements = true;
        _firstReplacement = node.tag;
    }
}

} // namespace tessarin::xml_parser
