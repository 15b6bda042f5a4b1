#include <agent/AgentNode.h>

#include <agent/AgentNodeLookUps.h>
#include <agent/AgentNodeWalk.h>
#include <agent/ComponentHandle.h>
#include <agent/DocumentFaults.h>
#include <agent/DocumentReader.h>
#include <agent/DocumentTransform.h>
#include <agent/HookOf.h>
#include <agent/VisualModelComponent.h>
#include <dynamics/DynamicsBody.h>
#include <logging/Log.h>
#include <xml_parser/XMLNode.h>

#include <osg/MatrixTransform>

#include <string_view>

namespace tessarin::agent {

using logging::Logger;
using xml_parser::XMLNode;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

void AgentNode::modifyWithXml(std::istream& stream) {
    modifyWithXml(stream, std::string());
}

void AgentNode::modifyWithXml(std::istream& stream, const std::string& sourceName) {
    DocumentReader reader(sourceName);
    modifyWithXml(reader.read(stream));
}

void AgentNode::modifyWithXml(const std::string& text) {
    modifyWithXml(text, std::string());
}

void AgentNode::modifyWithXml(const std::string& text, const std::string& sourceName) {
    DocumentReader reader(sourceName);
    modifyWithXml(reader.read(text));
}

void AgentNode::modifyWithXml(XMLNode* node) {
    if (!node)
        return;
    ++hostCalls; // in a hook there may be a pass already
    const DocumentPass pass;
    const ElementInWork work(*node);
    const Visit visit(*this);
    internalModifyWithXml(node);
    if (!visit.isOver())
        sendEvent(AgentEvent::AGENT_MODIFIED);
}

/// The component named "VisualModelComponent" of the nearest agent upwards, or null. Agents taken out of the tree go on
/// naming their former parents, so the way up may lead in a circle; the slow climber is met then.
Component* AgentNode::findVisualModel(AgentNode* agent) {
    AgentNode* slow = agent;
    for (bool odd = false; agent; odd = !odd) {
        if (Component* const model = LookUps::findComponent(*agent, "VisualModelComponent"))
            return model;
        agent = agent->getParent();
        if (odd)
            slow = slow->getParent();
        if (agent == slow)
            return nullptr;
    }
    return nullptr;
}

/// Ties a geometry component to the model's node of its agent's name. False ends the pass over the agent's element:
/// there is a visual model, but it is empty.
bool AgentNode::tieGeometry(GeometryComponent& geometry) {
    AgentNode* const agent = geometry.getAgentNode();
    Component* const found = findVisualModel(agent);
    if (!found) {
        const PlaceAsContext context;
        TESSARIN_LOG(category, Logger::errorLevel,
                     "Failed to find VisualModelComponent thats corresponds to GeometryComponent");
        return true;
    }
    auto* const visualModel = dynamic_cast<VisualModelComponent*>(found);
    const osg::ref_ptr<osg::Node> model = visualModel ? visualModel->getModel() : nullptr;
    if (!model)
        return false;

    osg::Node* const node = LookUps::findNode(*model, agent->getName());
    osg::Transform* const transform = node ? node->asTransform() : nullptr;
    if (osg::MatrixTransform* const placed = transform ? transform->asMatrixTransform() : nullptr)
        placed->setMatrix(osg::Matrixd());
    geometry.setOsgNode(node ? osg::ref_ptr<osg::Node>(node) : model);
    return true;
}

namespace {

void placeBody(RigidBodyComponent& component, const DocumentTransform& transform) {
    dynamics::DynamicsBody* const body = component.getBody();
    if (!body)
        return;
    body->setMatrix(transform.matrix);
    body->setPosition(transform.translation);
    body->setRotation(transform.rotation);
}

} // namespace

/// Applies an element to this agent and, through recursion, to its branch. No event is sent but the creation of new
/// children.
void AgentNode::internalModifyWithXml(XMLNode* node) {
    if (node->tag != "AgentNode")
        return;
    std::string name;
    node->getAttributeValueString("name", name);
    if (!name.empty())
        setName(name);
    TESSARIN_LOG(category, Logger::infoLevel, "Creating AgentNode(" << name << ")");

    DocumentTransform transform;
    if (transform.read(*node, getName()) == DocumentTransform::READ)
        setMatrix(transform.matrix);

    const Visit visit(*this);
    const LookUps::Pass pass;
    for (int i = 0; i < node->getNumChildren() && !visit.isOver(); ++i) {
        XMLNode* const element = node->getChild(i);
        if (element->tag == "AgentNode")
            modifyChildWithXml(element);
        else if (element->tag == "Component" && !modifyOrAddComponent(element, transform))
            return;
    }
}

/// The element of a child agent: applied to the first child of that name, or made into a new one.
void AgentNode::modifyChildWithXml(XMLNode* element) {
    std::string name;
    element->getAttributeValueString("name", name);
    if (AgentNode* const child = LookUps::findChild(*this, name)) {
        child->internalModifyWithXml(element);
        return;
    }
    const Visit visit(*this);
    AgentNode* const child = createAndTell(element);
    if (!child)
        return;
    if (visit.isOver())
        deleteUnheld(child);
    else if (!child->isAbove(this))
        addChild(child);
}

/// The element of a component. False ends the pass over this agent's element.
bool AgentNode::modifyOrAddComponent(XMLNode* element, const DocumentTransform& transform) {
    std::string name;
    element->getAttributeValueString("name", name);

    const ElementInWork work(*element);
    const Visit visit(*this);
    Component* component = name.empty() ? nullptr : LookUps::findComponent(*this, name);
    if (component) {
        component = modifyComponentWithXml(component, element);
    } else {
        const ComponentHandle made(createComponentFromXml(element));
        if (visit.isOver()) {
            deleteUnheld(made.get());
            return true;
        }
        if (!made.get()) {
            const PlaceAsContext context;
            TESSARIN_LOG(category, Logger::errorLevel, "AgentNode " << name << " could not add a component from XML");
            return true;
        }
        component = attachNew(made);
    }
    if (!component || visit.isOver())
        return true;

    const ComponentHandle handle(component);
    const bool isHosts = !keepsLookUps(*component);
    const bool isGeometry = std::string_view(component->getClassName()) == "GeometryComponent";
    hostCalls += isHosts ? 1 : 0;
    if (isGeometry) {
        auto* const geometry = dynamic_cast<GeometryComponent*>(component);
        const bool isTied = !geometry || tieGeometry(*geometry);
        hostCalls += isHosts ? 1 : 0;
        if (!isTied)
            return false;
    }
    if (name == "RigidBodyComponent" && transform.isUsable() && handle.get()) {
        if (auto* const body = dynamic_cast<RigidBodyComponent*>(component))
            placeBody(*body, transform);
    }
    return true;
}

} // namespace tessarin::agent
