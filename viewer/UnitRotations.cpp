#include <viewer/UnitRotations.h>

#include <xml_parser/XMLNode.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

namespace tessarin::viewer {

using xml_parser::XMLNode;

namespace {

/// The four numbers of a text as documents have it, parted by blanks. False for any other text: what can't be read is
/// left to the agents, which tell of it.
bool readQuaternion(std::string_view text, double (&quaternion)[4]) {
    for (double& number : quaternion) {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        const std::string_view word = text.substr(0, text.find(' '));
        const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
        if (error != std::errc() || stop != word.data() + word.size())
            return false;
        text.remove_prefix(word.size());
    }
    return true;
}

} // namespace

void makeRotationsUnit(XMLNode& agent) {
    for (int i = 0; i < agent.getNumChildren(); ++i) {
        XMLNode& child = *agent.getChild(i);
        if (child.tag == "AgentNode")
            makeRotationsUnit(child);
        XMLNode* const rotation = child.tag == "Transform" ? child.getChild("Rotate", true) : nullptr;
        double quaternion[4];
        if (!rotation || !readQuaternion(rotation->text, quaternion))
            continue;
        double square = 0;
        for (const double number : quaternion)
            square += number * number;
        const double length = std::sqrt(square);
        if (!(std::abs(length - 1) < 1e-3))
            continue;
        rotation->text.clear();
        for (const double number : quaternion) {
            char digits[32];
            rotation->text += rotation->text.empty() ? "" : " ";
            rotation->text.append(digits, std::to_chars(digits, digits + sizeof(digits), number / length).ptr);
        }
    }
}

} // namespace tessarin::viewer
