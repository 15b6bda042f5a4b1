#include <agent/VisualModelComponent.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>
#include <agent/ComponentHandle.h>
#include <agent/DocumentFaults.h>
#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SimObjectDB.h>
#include <agent/VisualModelComponentModelLoader.h>
#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/DynamicsWorld.h>
#include <logging/Log.h>

#include <osgDB/FileNameUtils>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <cstddef>
#include <memory>
#include <ostream>
#include <utility>

namespace tessarin::agent {

using logging::Logger;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

VisualModelComponentModelLoader* VisualModelComponent::modelLoader = nullptr;
std::map<std::string, AbstractAccessor*>* VisualModelComponent::_accessors = nullptr;

static SimObjectFactoryVisualModelComponent factory;
[[maybe_unused]] static const bool registered = [] {
    SimObjectDB::instance()->registerFactory(&factory, "VisualModelComponent");
    VisualModelComponent::initAccessors(nullptr);
    return true;
}();

SimObject* SimObjectFactoryVisualModelComponent::create() {
    return new VisualModelComponent;
}

VisualModelComponent::VisualModelComponent() {
    setName("VisualModelComponent");
}

VisualModelComponent::~VisualModelComponent() = default;

const char* VisualModelComponent::getClassName() {
    return "VisualModelComponent";
}

bool VisualModelComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>&) {
    return true;
}

void VisualModelComponent::initAccessors(VisualModelComponent*) {
    // The class is not of standard layout, for which alone the language promises offsetof; GCC and Clang support it for
    // every class without virtual bases.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    constexpr std::size_t filePathOffset = offsetof(VisualModelComponent, filePath);
#pragma GCC diagnostic pop
    _accessors = new std::map<std::string, AbstractAccessor*>;
    (*_accessors)["filePath"] = new Accessor<std::string>(filePathOffset);
}

AccessorWithObject VisualModelComponent::getAccessor(const std::string& fieldName) {
    const auto found = _accessors->find(fieldName);
    if (found == _accessors->end())
        return Component::getAccessor(fieldName);
    return {found->second, this};
}

void VisualModelComponent::getFieldNames(std::list<std::string>& names) {
    for (const auto& [name, accessor] : *_accessors)
        names.push_back(name);
}

void VisualModelComponent::printValues(std::ostream& stream) {
    Component::printValues(stream);
    for (const auto& [name, accessor] : *_accessors)
        stream << name << '=' << accessor->getAsString(this) << ',';
}

void VisualModelComponent::setFilePath(std::string path) {
    filePath = std::move(path);
}

void VisualModelComponent::setModelLoader(VisualModelComponentModelLoader* loader) {
    modelLoader = loader;
}

Component* VisualModelComponent::initialize() {
    // The hooks of what comes in, the world and the loader may delete this component.
    const ComponentHandle handle(this);
    if (osgDB::getLowerCaseFileExtension(filePath) == "dae" && agentNode)
        loadPhysics(std::string(filePath), agentNode);
    if (!handle.get())
        return nullptr;
    if (!modelLoader) {
        TESSARIN_LOG(category, Logger::errorLevel, "No model loader is set to load " << filePath << placeInWork());
        return this;
    }
    const osg::ref_ptr<osg::Node> loaded = modelLoader->loadModel(std::string(filePath));
    if (!handle.get())
        return nullptr;
    model = loaded;
    return this;
}

void VisualModelComponent::loadPhysics(const std::string& path, AgentNodeHandle agent) {
    if (!AgentNode::dynamicsWorld) {
        TESSARIN_LOG(category, Logger::errorLevel,
                     "No dynamics world is set to load the physics of " << path << placeInWork());
        return;
    }

    struct ComponentAdder final : dynamics::DynamicsBodyFunctor {
        void visitJoint(dynamics::DynamicsJoint* joint) override {
            auto owner = std::make_unique<JointComponent>();
            owner->setJoint(joint);
            if (!agent)
                return;
            JointComponent* const component = owner.release();
            agent->addComponent(component);
            component->setName(joint->name);
        }

        void visitBody(dynamics::DynamicsBody* body) override {
            std::unique_ptr<dynamics::DynamicsBody> owned(body);
            if (!agent)
                return;
            auto* const child = new AgentNode;
            agent->addChild(child);
            child->setName(body->getName());
            Component* const component = child->getOrAddComponent("RigidBodyComponent", "RigidBodyComponent");
            // A host may have put a class of its own in the place of the standard one.
            if (auto* const rigidBody = dynamic_cast<RigidBodyComponent*>(component))
                rigidBody->setBody(owned.release());
        }

        osg::ref_ptr<osg::Node> model;
        AgentNodeHandle agent;
    };

    ComponentAdder adder;
    adder.model = osgDB::readRefNodeFile(path, osgDB::Registry::instance()->getOptions());
    adder.agent = agent;
    if (agent && AgentNode::dynamicsWorld)
        AgentNode::dynamicsWorld->loadScene(path, gmtl::Matrix<double, 4, 4>(), adder);
}

} // namespace tessarin::agent
