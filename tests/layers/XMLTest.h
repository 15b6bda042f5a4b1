#pragma once

#include <tests/doubles/LogCapture.h>
#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLNodeCreator.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace tessarin::xml_parser {

using doubles::LogCapture;
using testing::ElementsAre;

/// Leaves the document as it is written.
struct PlainReader : XMLNodeCreator {
    PlainReader() {
        setPruneEmptyTags(false);
        setCreateAttributesFromPrimitiveChildren(false);
    }
};

/// A text in which two trees are equal only if they are: <tag "text" attribute="value" children>.
inline std::string describe(const XMLNode& node) {
    std::string result = '<' + node.tag;
    if (!node.text.empty())
        result += ' ' + testing::PrintToString(node.text);
    for (const auto& [name, value] : node.attributes)
        result += ' ' + name + '=' + testing::PrintToString(value);
    for (int i = 0; i < node.getNumChildren(); ++i)
        result += describe(*node.getChild(i));
    return result + '>';
}

inline std::string print(const XMLNode& node, int indent = 0) {
    std::ostringstream stream;
    stream.width(40); // which is none of the node's business
    node.printBranch(stream, indent);
    return stream.str();
}

} // namespace tessarin::xml_parser
