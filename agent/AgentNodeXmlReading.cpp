#include <agent/AgentNode.h>

#include <agent/AgentNodeWalk.h>
#include <agent/Component.h>
#include <agent/ComponentHandle.h>
#include <agent/DocumentFaults.h>
#include <agent/DocumentReader.h>
#include <agent/FieldRefusal.h>
#include <agent/HookOf.h>
#include <logging/Log.h>
#include <logging/PrintableText.h>
#include <xml_parser/XMLNode.h>

namespace tessarin::agent {

using logging::Logger;
using xml_parser::XMLNode;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

AgentNode* AgentNode::createFromXml(std::istream& stream) {
    return createFromXml(stream, std::string());
}

AgentNode* AgentNode::createFromXml(std::istream& stream, const std::string& sourceName) {
    DocumentReader reader(sourceName);
    return createFromXml(reader.read(stream));
}

AgentNode* AgentNode::createFromXmlString(const std::string& text) {
    return createFromXmlString(text, std::string());
}

AgentNode* AgentNode::createFromXmlString(const std::string& text, const std::string& sourceName) {
    DocumentReader reader(sourceName);
    return createFromXml(reader.read(text));
}

AgentNode* AgentNode::createFromXml(XMLNode* node) {
    if (!node)
        return nullptr;
    ++hostCalls; // in a hook there may be a pass already
    const DocumentPass pass;
    return createAndTell(node);
}

AgentNode* AgentNode::createAndTell(XMLNode* node) {
    const ElementInWork work(*node);
    AgentNode* const agent = internalCreateFromXml(node);
    if (!agent)
        return nullptr;
    const Visit visit(*agent);
    agent->sendEvent(AgentEvent::AGENT_CREATED);
    return visit.isOver() ? nullptr : agent;
}

/// Deletes a new agent that has lost its place, unless a hook has found it another one.
void AgentNode::deleteUnheld(AgentNode* agent) {
    if (agent->listing.isEmpty())
        delete agent;
}

/// Deletes a new component that has lost its agent, unless a hook has found it another one.
void AgentNode::deleteUnheld(Component* component) {
    if (component && component->listing.isEmpty())
        delete component;
}

/// Makes an agent and its branch without telling it. Null if the element is no AgentNode, or if a hook has deleted the
/// agent meanwhile.
AgentNode* AgentNode::internalCreateFromXml(XMLNode* node) {
    if (node->tag != "AgentNode")
        return nullptr;
    std::string name;
    node->getAttributeValueString("name", name);
    auto* const agent = new AgentNode;
    agent->setName(name);
    TESSARIN_LOG(category, Logger::infoLevel, "Creating AgentNode(" << name << ")");

    const Visit visit(*agent);
    for (int i = 0; i < node->getNumChildren() && !visit.isOver(); ++i) {
        XMLNode* const element = node->getChild(i);
        if (element->tag == "AgentNode") {
            AgentNode* const child = internalCreateFromXml(element);
            if (child && visit.isOver())
                deleteUnheld(child);
            else if (child && !child->isAbove(agent))
                agent->addChild(child);
        } else if (element->tag == "Component") {
            const ElementInWork work(*element);
            const ComponentHandle made(createComponentFromXml(element));
            if (visit.isOver()) {
                deleteUnheld(made.get());
                break;
            }
            if (!made.get()) {
                const PlaceAsContext context;
                TESSARIN_LOG(category, Logger::errorLevel,
                             "AgentNode " << agent->getName() << " could not add a component from XML");
                continue;
            }
            const Component* const component = agent->attachNew(made);
            if (component && component->getName() == "VisualModelComponent") {
                // The modification walks the whole element, what creation has read of it included.
                agent->internalModifyWithXml(node);
                if (!visit.isOver())
                    agent->sendEvent(AgentEvent::AGENT_MODIFIED);
                break;
            }
        }
    }
    return visit.isOver() ? nullptr : agent;
}

/// Attaches a new component and initialises it. Null if it, or this agent, is gone or they have parted meanwhile.
Component* AgentNode::attachNew(const ComponentHandle& made) {
    const Visit visit(*this);
    Component* const component = made.get();
    addComponent(component);
    if (visit.isOver()) {
        deleteUnheld(made.get());
        return nullptr;
    }
    if (!holds(made))
        return nullptr;
    callHookOf(*component, "initialize", [component] { component->initialize(); });
    return !visit.isOver() && holds(made) ? component : nullptr;
}

Component* AgentNode::createComponent(const std::string& className) {
    return Component::createComponent(className);
}

Component* AgentNode::createComponentFromXml(XMLNode* node) {
    if (!node)
        return nullptr;
    const ElementInWork work(*node);
    const std::string className = node->getAttributeValue("class");
    TESSARIN_LOG(category, Logger::infoLevel, "Creating Component " << className);
    Component* const component = createComponent(className);
    if (!component) {
        const PlaceAsContext context;
        TESSARIN_LOG(category, Logger::errorLevel, "Error creating component " << className << " from xml");
        return nullptr;
    }
    const std::string name = node->getAttributeValue("name");
    component->setName(name.empty() ? className : name);
    return modifyComponentWithXml(component, node);
}

namespace {

/// Says that a field's text is no value for it. The component is on its agent, or it is being made for the agent of the
/// element around its own.
void tellRefusal(Component& component, const XMLNode& field, const std::string& expected) {
    if (!DocumentPass::isNewFault(field))
        return;
    const AgentNode* const agent = component.getAgentNode();
    const XMLNode* const element = field.getParent() ? field.getParent()->getParent() : nullptr;
    const std::string agentName = agent ? agent->getName() : element ? element->getAttributeValue("name") : "";
    TESSARIN_LOG(category, Logger::errorLevel,
                 "AgentNode " << agentName << " could not set the field " << field.getAttributeValue("name")
                              << " of its component " << component.getName() << " (" << component.getClassName()
                              << ") to " << logging::quotedText(field.getAttributeValue("value")) << ": expected "
                              << expected << ", so the field stays as it was" << placeOf(field));
}

} // namespace

/// Null if a hook has deleted the component meanwhile.
Component* AgentNode::modifyComponentWithXml(Component* component, XMLNode* node) {
    const ComponentHandle handle(component);
    for (int i = 0; i < node->getNumChildren() && handle.get(); ++i) {
        const XMLNode* const element = node->getChild(i);
        if (element->tag != "field")
            continue;
        const std::string name = element->getAttributeValue("name");
        const std::string value = element->getAttributeValue("value");
        TESSARIN_LOG(category, Logger::infoLevel,
                     "Component(" << component->getClassName() << ")." << name << "=" << value);
        const ElementInWork work(*element);
        const FieldRefusal refusal;
        callHookOf(*component, "setAsString", [&] { component->setAsString(name, value); });
        if (refusal.hasHappened() && handle.get())
            tellRefusal(*component, *element, refusal.getExpectation());
    }
    return handle.get();
}

} // namespace tessarin::agent
