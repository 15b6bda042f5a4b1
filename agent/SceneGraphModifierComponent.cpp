#include <agent/SceneGraphModifierComponent.h>

#include <agent/AgentNode.h>
#include <agent/SimObjectDB.h>

namespace tessarin::agent {

static SimObjectFactorySceneGraphModifierComponent factory;
[[maybe_unused]] static const bool registered = [] {
    SimObjectDB::instance()->registerFactory(&factory, "SceneGraphModifierComponent");
    return true;
}();

SimObject* SimObjectFactorySceneGraphModifierComponent::create() {
    return new SceneGraphModifierComponent;
}

SceneGraphModifierComponent::~SceneGraphModifierComponent() = default;

const char* SceneGraphModifierComponent::getClassName() {
    return "SceneGraphModifierComponent";
}

void SceneGraphModifierComponent::update() {
    for (; !scheduledAdditions.empty(); scheduledAdditions.pop_front()) {
        const auto& [parent, child] = scheduledAdditions.front();
        if (parent && child)
            parent->addChild(child);
    }
    for (; !scheduledRemovals.empty(); scheduledRemovals.pop_front()) {
        const auto& [parent, child] = scheduledRemovals.front();
        if (parent && child)
            parent->removeChild(child);
    }
}

AccessorWithObject SceneGraphModifierComponent::getAccessor(const std::string& fieldName) {
    return Component::getAccessor(fieldName);
}

void SceneGraphModifierComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
}

void SceneGraphModifierComponent::printValues(std::ostream& stream) {
    Component::printValues(stream);
}

void SceneGraphModifierComponent::scheduleAddChild(AgentNode* parent, AgentNode* child) {
    scheduledAdditions.emplace_back(parent, child);
}

void SceneGraphModifierComponent::scheduleRemoveChild(AgentNode* parent, AgentNode* child) {
    scheduledRemovals.emplace_back(parent, child);
}

} // namespace tessarin::agent
