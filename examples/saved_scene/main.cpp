// Saves a scene and opens it again a hundred times. Documents hold six digits, and agents take a quaternion as it
// stands for one of unit length, so rotations would turn further each time: makeRotationsUnit is what a host does about
// it.

#include <agent/AgentNode.h>
#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLNodeCreator.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

using tessarin::agent::AgentNode;
using tessarin::xml_parser::XMLNode;
using tessarin::xml_parser::XMLNodeCreator;
using Quaternion = gmtl::Quat<double>;

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

/// Makes the rotations of an agent's element and of all below it unit quaternions, where rounding is all that keeps
/// their length from 1. Others, such as those of a matrix with a scale, stay as they are.
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

std::string save(AgentNode& scene) {
    std::ostringstream text;
    scene.createXml(text);
    return text.str();
}

std::unique_ptr<AgentNode> open(const std::string& text, bool makeUnit) {
    XMLNodeCreator reader;
    reader.setPruneEmptyTags(false);
    reader.setCreateAttributesFromPrimitiveChildren(false);
    reader.setSourceName("scene.xml"); // what a fault is told with
    reader.parse(text, true);
    XMLNode* const root = reader.getRoot();
    if (!root)
        return nullptr;
    if (makeUnit)
        makeRotationsUnit(*root);
    std::unique_ptr<AgentNode> scene(AgentNode::createFromXml(root));
    scene->modifyWithXml(root); // creation reads no transforms
    return scene;
}

/// In degrees.
double angleBetween(Quaternion a, Quaternion b) {
    double cosine = 0, squareA = 0, squareB = 0;
    for (int i = 0; i < 4; ++i) {
        cosine += a[i] * b[i];
        squareA += a[i] * a[i];
        squareB += b[i] * b[i];
    }
    return 2 * std::acos(std::min(1.0, std::abs(cosine) / std::sqrt(squareA * squareB))) * 180 / std::acos(-1.0);
}

/// By how much the worst rotation is off after a hundred saves.
double measure(bool makeUnit) {
    auto scene = std::make_unique<AgentNode>("scene");
    for (int degrees = 1; degrees < 180; ++degrees) {
        const double half = degrees * std::acos(-1.0) / 360, part = std::sin(half) / 3;
        scene->addChild("turned by " + std::to_string(degrees))
            ->setRotation(Quaternion(part, 2 * part, -2 * part, std::cos(half)));
    }
    const std::string first = save(*scene);
    const std::unique_ptr<AgentNode> original = std::move(scene);
    scene = open(first, makeUnit);
    for (int i = 1; i < 100 && scene; ++i)
        scene = open(save(*scene), makeUnit);
    double worst = 0;
    for (AgentNode* const agent : original->getChildren()) {
        AgentNode* const same = scene ? scene->getChild(agent->getName()) : nullptr;
        worst = std::max(worst, same ? angleBetween(agent->getRotation(), same->getRotation()) : 360);
    }
    return worst;
}

} // namespace

int main() {
    std::printf("as it stands: %.3f degrees\n", measure(false));
    std::printf("made unit: %.3f degrees\n", measure(true));
}
