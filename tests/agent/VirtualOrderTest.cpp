// Libraries and hosts built apart call each other through these tables, so the order of virtual operations is part of
// the interface. Under the Itanium C++ ABI a pointer to a virtual member holds its offset in the table plus one.
#include <tests/agent/AgentTest.h>

#include <agent/Accessor.h>
#include <agent/AgentFactory.h>
#include <agent/BehaviourComponent.h>

#include <cstring>

#if defined(__x86_64__)
namespace tessarin::agent {
namespace {

template <class Member>
std::ptrdiff_t slotOf(Member member) {
    std::ptrdiff_t words[2];
    static_assert(sizeof member == sizeof words);
    std::memcpy(words, &member, sizeof member);
    const auto size = static_cast<std::ptrdiff_t>(sizeof(void*));
    return words[0] % size == 1 && words[0] < 1000 ? (words[0] - 1) / size : -1;
}

template <class... Members>
void expectSlots(const char* what, std::ptrdiff_t first, Members... members) {
    for (const std::ptrdiff_t slot : {slotOf(members)...})
        EXPECT_EQ(slot, first++) << what;
}

struct OpenFactory : AgentFactory {
    static auto addAgentMember() { return &OpenFactory::addAgent; }
};

// A virtual destructor takes the slots 0 and 1.
TEST(VirtualOrder, OfTheAgentClasses) {
    expectSlots("SimObject", 2, &SimObject::getClassName);
    expectSlots("AgentNode", 2, &AgentNode::getClassName);
    expectSlots("Component", 2, &Component::getClassName, &Component::initialize, &Component::getSupportedEvents,
                &Component::setAgentNode, &Component::onAgentCreated, &Component::onAgentModified,
                &Component::prePhysicsUpdate, &Component::prePhysicsTick, &Component::postPhysicsTick,
                &Component::postPhysicsUpdate, &Component::update, &Component::postUpdate, &Component::mousePress,
                &Component::mouseRelease, &Component::mouseDrag, &Component::mouseEnter, &Component::mouseOver,
                &Component::mouseExit, &Component::windowResize, &Component::attached, &Component::onCollision,
                &Component::getAccessor, &Component::getFieldNames, &Component::getOsgNode);
    expectSlots("BehaviourComponent", 12, &BehaviourComponent::update);
    expectSlots("RigidBodyComponent", 26, &RigidBodyComponent::printValues);
    expectSlots("JointComponent", 26, &JointComponent::printValues);
    expectSlots("GeometryComponent", 26, &GeometryComponent::printValues, &GeometryComponent::setOsgNode);
    expectSlots("VisualModelComponent", 26, &VisualModelComponent::printValues);
    expectSlots("SceneGraphModifierComponent", 26, &SceneGraphModifierComponent::printValues);
    EXPECT_EQ(slotOf(&Component::printValues), -1) << "is not virtual";

    expectSlots("SimObjectFactory", 0, &SimObjectFactory::create);
    expectSlots("AbstractAccessor", 2, &AbstractAccessor::setAsString, &AbstractAccessor::getAsString,
                &AbstractAccessor::setValue, &AbstractAccessor::getValue);
    expectSlots("Accessor", 6, &Accessor<std::string>::set, &Accessor<std::string>::get);
    expectSlots("AgentFactory", 2, &AgentFactory::createAgent, &AgentFactory::createAndAddAgent,
                &AgentFactory::getFactoryName, OpenFactory::addAgentMember());
    expectSlots("VisualModelComponentModelLoader", 2, &VisualModelComponentModelLoader::loadModel);
}

TEST(VirtualOrder, OfTheDynamicsInterface) {
    using dynamics::DynamicsBody;
    expectSlots("DynamicsBody", 2, &DynamicsBody::getName, &DynamicsBody::setUserData, &DynamicsBody::getMatrix,
                &DynamicsBody::setMatrix, &DynamicsBody::setLinearVelocity, &DynamicsBody::setAngularVelocity,
                &DynamicsBody::setPosition, &DynamicsBody::setRotation, &DynamicsBody::isActive,
                &DynamicsBody::prepareMove);
    expectSlots("DynamicsBodyFunctor", 0, &dynamics::DynamicsBodyFunctor::visitJoint,
                &dynamics::DynamicsBodyFunctor::visitBody);
    // The destructor is the first virtual operation and loadScene the second.
    expectSlots("DynamicsWorld", 2, &dynamics::DynamicsWorld::loadScene);
}

} // namespace
} // namespace tessarin::agent
#endif
