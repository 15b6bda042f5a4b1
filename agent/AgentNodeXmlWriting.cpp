#include <agent/AgentNode.h>

#include <agent/Component.h>
#include <agent/HookGuard.h>
#include <agent/NumberList.h>
#include <xml_parser/XMLNode.h>

#include <gmtl/Generate.h>

#include <memory>
#include <ostream>

namespace tessarin::agent {

using xml_parser::XMLNode;

namespace {

void writeTransform(XMLNode& agentElement, const gmtl::Matrix<double, 4, 4>& matrix) {
    const double translation[3] = {matrix(0, 3), matrix(1, 3), matrix(2, 3)};
    gmtl::Quat<double> quaternion;
    gmtl::set(quaternion, matrix);
    const double rotation[4] = {quaternion[0], quaternion[1], quaternion[2], quaternion[3]};

    XMLNode* const element = agentElement.addChild("Transform");
    element->addChild("Translate")->text = writeNumberList(translation, 3);
    element->addChild("Rotate")->text = writeNumberList(rotation, 4);
}

void writeComponent(XMLNode& agentElement, Component& component) {
    XMLNode* const element = agentElement.addChild("Component");
    element->attributes["class"] = component.getClassName();
    if (!component.getName().empty())
        element->attributes["name"] = component.getName();

    std::list<std::string> names;
    callHook("getFieldNames", [&] { component.getFieldNames(names); });
    for (const std::string& name : names) {
        callHook("getAsString", [&] {
            const AccessorWithObject accessor = component.getAccessor(name);
            if (!accessor.accessor)
                return;
            const std::string value = accessor.accessor->getAsString(accessor.object);
            XMLNode* const field = element->addChild("field");
            field->attributes["name"] = name;
            field->attributes["value"] = value;
        });
    }
}

} // namespace

XMLNode* AgentNode::createXml() {
    auto root = std::make_unique<XMLNode>("AgentNode", nullptr);
    if (!getName().empty())
        root->attributes["name"] = getName();
    writeTransform(*root, getMatrix());
    for (Component* const component : components)
        writeComponent(*root, *component);
    for (AgentNode* const child : children)
        root->addChild(child->createXml());
    return root.release();
}

void AgentNode::createXml(std::ostream& stream) {
    const std::unique_ptr<XMLNode> root(createXml());
    root->printBranch(stream, 0);
}

} // namespace tessarin::agent
