#include <agent/SimObjectDB.h>

#include <agent/AgentNode.h>
#include <agent/Component.h>
#include <agent/DocumentReader.h>
#include <agent/HookOf.h>
#include <agent/SimObjectFactory.h>
#include <agent/VisualModelComponent.h>
#include <xml_parser/XMLNode.h>

#include <cassert>

namespace tessarin::agent {

SimObjectDB* SimObjectDB::_instance = nullptr;

SimObjectDB::~SimObjectDB() = default;

SimObjectDB* SimObjectDB::instance() {
    if (!_instance)
        _instance = new SimObjectDB;
    return _instance;
}

void SimObjectDB::registerFactory(SimObjectFactory* factory, const std::string& name) {
    assert(factory && "SimObjectDB::registerFactory takes no null factory.");
    if (factory)
        factories[name] = factory;
}

SimObject* SimObjectDB::createObject(const std::string& name) {
    const auto found = factories.find(name);
    SimObject* object = nullptr;
    if (found == factories.end())
        return nullptr;
    guardHook("create", [&, factory = found->second] { object = factory->create(); });
    auto* const component = dynamic_cast<Component*>(object);
    if (!component || !(keepsLookUps(*component) || typeid(*component) == typeid(VisualModelComponent)))
        ++hostCalls;
    return object;
}

SimObject* SimObjectDB::createObjectFromXML(std::istream& stream) {
    DocumentReader reader;
    xml_parser::XMLNode* const root = reader.read(stream);
    if (!root)
        return nullptr;
    if (root->tag == "Component")
        return AgentNode::createComponentFromXml(root);
    return AgentNode::createFromXml(root);
}

} // namespace tessarin::agent
