#include <agent/DocumentTransform.h>

#include <agent/DocumentFaults.h>
#include <agent/NumberList.h>
#include <logging/Log.h>
#include <logging/PrintableText.h>
#include <xml_parser/XMLNode.h>

#include <cmath>
#include <vector>

namespace tessarin::agent {

using logging::Logger;
using xml_parser::XMLNode;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

namespace {

/// The first numbers of an element's text; fewer or none if something else stands there, or the element is null.
std::vector<double> readNumbers(const XMLNode* element, std::size_t count) {
    std::vector<double> numbers = element ? readNumberList(element->text) : std::vector<double>();
    if (numbers.size() > count)
        numbers.resize(count);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        if (!std::isfinite(numbers[i]))
            numbers.resize(i);
    return numbers;
}

/// @param child the element that has not its numbers; null if there is none.
void tellFault(const XMLNode& transform, const std::string& agentName, const std::string& tag, const XMLNode* child,
               std::size_t count) {
    const XMLNode& element = child ? *child : transform;
    if (!DocumentPass::isNewFault(element))
        return;
    const std::string found = child ? "its text is " + logging::quotedText(child->text) : "it is missing";
    TESSARIN_LOG(category, Logger::errorLevel,
                 "AgentNode " << agentName << " could not read its Transform from XML: " << tag << " needs " << count
                              << " numbers separated by blanks only (no tabs or line breaks), but " << found
                              << ", so its pose stays as it was" << placeOf(element));
}

// By the formula for a unit quaternion, whatever the quaternion's length.
void setMatrix(gmtl::Matrix<double, 4, 4>& matrix, const std::vector<double>& position, const std::vector<double>& q) {
    const double x = q[0];
    const double y = q[1];
    const double z = q[2];
    const double w = q[3];
    matrix.set(1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y), position[0], //
               2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x), position[1], //
               2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y), position[2], //
               0.0, 0.0, 0.0, 1.0);
}

} // namespace

DocumentTransform::State DocumentTransform::read(const XMLNode& agentElement, const std::string& agentName) {
    const XMLNode* const element = agentElement.getChild("Transform", true);
    if (!element)
        return state = MISSING;
    const XMLNode* const translate = element->getChild("Translate", true);
    const XMLNode* const rotate = element->getChild("Rotate", true);
    const std::vector<double> position = readNumbers(translate, 3);
    const std::vector<double> quaternion = readNumbers(rotate, 4);
    if (position.size() < 3)
        tellFault(*element, agentName, "Translate", translate, 3);
    else if (quaternion.size() < 4)
        tellFault(*element, agentName, "Rotate", rotate, 4);
    if (position.size() < 3 || quaternion.size() < 4)
        return state = UNREADABLE;
    translation.set(position[0], position[1], position[2]);
    rotation.set(quaternion[0], quaternion[1], quaternion[2], quaternion[3]);
    setMatrix(matrix, position, quaternion);
    return state = READ;
}

} // namespace tessarin::agent
