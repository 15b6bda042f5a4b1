#include <agent/DocumentTransform.h>

#include <agent/NumberList.h>
#include <logging/Log.h>
#include <xml_parser/XMLNode.h>

#include <cmath>
#include <vector>

namespace tessarin::agent {

using logging::Logger;
using xml_parser::XMLNode;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

namespace {

/// The first numbers of a child element's text; fewer or none if the element is missing or something else stands there.
std::vector<double> readChild(const XMLNode& transform, const std::string& tag, std::size_t count) {
    const XMLNode* const element = transform.getChild(tag, true);
    if (!element)
        return {};
    std::vector<double> numbers = readNumberList(element->text);
    if (numbers.size() > count)
        numbers.resize(count);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        if (!std::isfinite(numbers[i]))
            numbers.resize(i);
    return numbers;
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
    const std::vector<double> position = readChild(*element, "Translate", 3);
    const std::vector<double> quaternion = readChild(*element, "Rotate", 4);
    if (position.size() < 3 || quaternion.size() < 4) {
        TESSARIN_LOG(category, Logger::errorLevel,
                     "AgentNode " << agentName << " could not read its Transform from XML: "
                                  << (position.size() < 3 ? "Translate needs 3 numbers" : "Rotate needs 4 numbers"));
        return state = UNREADABLE;
    }
    translation.set(position[0], position[1], position[2]);
    rotation.set(quaternion[0], quaternion[1], quaternion[2], quaternion[3]);
    setMatrix(matrix, position, quaternion);
    return state = READ;
}

} // namespace tessarin::agent
