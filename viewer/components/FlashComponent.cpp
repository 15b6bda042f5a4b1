#include <viewer/components/FlashComponent.h>

#include <viewer/Glow.h>
#include <viewer/SimulationTime.h>
#include <viewer/components/BodyOfAgent.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>
#include <agent/CollisionData.h>
#include <dynamics/bullet/BulletBodyControl.h>

#include <osg/Transform>

#include <algorithm>
#include <cstddef>

namespace tessarin::viewer {

namespace {

/// How strong a fresh flash is: the agent's own colours stay visible.
constexpr double brightest = 0.85;

/// How many times the threshold a hit is that flashes as brightly as can be.
constexpr double fullHit = 5;

/// Seconds of free fall whose speed is the threshold where none is given.
constexpr double fallTime = 0.2;

} // namespace

FlashComponent::~FlashComponent() {
    if (brightness > 0)
        show(0);
}

bool FlashComponent::getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) {
    events.push_back(agent::AgentEvent::PRE_PHYSICS_TICK);
    return true;
}

void FlashComponent::setAgentNode(agent::AgentNode* node) {
    if (!node)
        show(0);
    Component::setAgentNode(node);
}

void FlashComponent::onCollision(agent::CollisionData& collision) {
    pushed += collision.impulse;
}

void FlashComponent::prePhysicsTick() {
    if (brightness > 0)
        show(fields.seconds > 0 ? brightness - SimulationTime::tick / fields.seconds : 0);
    const double peak = pushedBefore - std::max(pushedEarlier, pushed);
    if (peak > 0)
        show(std::max(brightness, brightnessOf(peak)));
    pushedEarlier = pushedBefore;
    pushedBefore = pushed;
    pushed = 0;
}

double FlashComponent::brightnessOf(double push) {
    const dynamics::bullet::BulletBodyControl* const body = findBodyControl(getAgentNode());
    if (!body || !body->isMovable())
        return 0;
    const double least = (fields.threshold > 0 ? fields.threshold : gravityStrength() * fallTime) * body->getMass();
    return push > least ? std::min(push / (fullHit * least), 1.0) : 0;
}

void FlashComponent::show(double strength) {
    if (strength == brightness)
        return;
    brightness = std::max(strength, 0.0);
    osg::Transform* const transform = getAgentNode() ? getAgentNode()->getOsgTransform() : nullptr;
    if (transform)
        setGlow(*transform, Glow::FLASH,
                osg::Vec4(fields.colour[0], fields.colour[1], fields.colour[2],
                          static_cast<float>(brightness * brightest)));
}

agent::AccessorWithObject FlashComponent::getAccessor(const std::string& fieldName) {
    static agent::Accessor<double> threshold(offsetof(Fields, threshold));
    static agent::Accessor<double> seconds(offsetof(Fields, seconds));
    static agent::Accessor<gmtl::Vec<float, 3>> colour(offsetof(Fields, colour));
    if (fieldName == "threshold")
        return {&threshold, &fields};
    if (fieldName == "seconds")
        return {&seconds, &fields};
    if (fieldName == "colour")
        return {&colour, &fields};
    return Component::getAccessor(fieldName);
}

void FlashComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
    names.insert(names.end(), {"threshold", "seconds", "colour"});
}

} // namespace tessarin::viewer
