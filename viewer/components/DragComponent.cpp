#include <viewer/components/DragComponent.h>

#include <viewer/Hand.h>
#include <viewer/SimulationTime.h>
#include <viewer/components/BodyOfAgent.h>

#include <agent/Accessor.h>
#include <agent/AgentNode.h>
#include <agent/Input.h>
#include <dynamics/DynamicsBody.h>
#include <dynamics/bullet/BulletBodyControl.h>

#include <osg/Math>
#include <osg/Matrixd>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>

#include <algorithm>
#include <cstddef>
#include <optional>

namespace tessarin::viewer {

using agent::AgentEvent;
using dynamics::bullet::BulletBodyControl;

namespace {

const int leftButton = 1; // as AgentNodeEventHandler counts
const double damping = 0.8;
const double spinDamping = 2; // per second: what hangs from the cursor comes to rest

osg::Matrixd poseOf(dynamics::DynamicsBody& body) {
    gmtl::Matrix<double, 4, 4> pose;
    body.getMatrix(pose);
    return osg::Matrixd(pose.getData());
}

/// Where the ray through the cursor first meets what is drawn of an agent and below it.
std::optional<osg::Vec3d> findPlaceUnderCursor(agent::AgentNode& agent) {
    const Hand& hand = Hand::instance();
    osg::NodePath path = agent.getOsgTransform()->getParentalNodePaths().front();
    path.pop_back();
    const osg::Matrixd toWorld = osg::computeLocalToWorld(path);
    const osg::Matrixd toLocal = osg::Matrixd::inverse(toWorld);
    const osg::Vec3d begin = hand.getFrom() * toLocal;
    const double reach =
        (begin - agent.getOsgTransform()->getBound().center()).length() + agent.getOsgTransform()->getBound().radius();
    const osg::Vec3d direction = osg::Matrixd::transform3x3(hand.getDirection(), toLocal);
    const osg::ref_ptr<osgUtil::LineSegmentIntersector> ray =
        new osgUtil::LineSegmentIntersector(begin, begin + direction * (reach / direction.length()));
    osgUtil::IntersectionVisitor visitor(ray);
    agent.getOsgTransform()->accept(visitor);
    if (!ray->containsIntersections())
        return std::nullopt;
    return ray->getFirstIntersection().getWorldIntersectPoint() * toWorld;
}

} // namespace

DragComponent::~DragComponent() {
    letGo();
}

bool DragComponent::getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) {
    events.insert(events.end(), {AgentEvent::MOUSE_PRESS, AgentEvent::PRE_PHYSICS_TICK});
    return true;
}

void DragComponent::setAgentNode(agent::AgentNode* node) {
    letGo();
    Component::setAgentNode(node);
}

void DragComponent::mousePress() {
    agent::AgentNode* const agent = getAgentNode();
    const BulletBodyControl* const control = findBodyControl(agent);
    if (!control || !control->isMovable() || Hand::instance().getPointed() != agent ||
        !input()->wasButtonCodePressed(input()->createMouseCode(leftButton)))
        return;
    if (const std::optional<osg::Vec3d> place = findPlaceUnderCursor(*agent))
        seize(*place);
}

void DragComponent::seize(const osg::Vec3d& place) {
    grip = place * osg::Matrixd::inverse(poseOf(*findBody(getAgentNode())));
    depth = Hand::instance().getDepth(place);
    Hand::instance().hold(this);
}

void DragComponent::letGo() {
    if (Hand::instance().holds(this))
        Hand::instance().letGo();
}

void DragComponent::prePhysicsTick() {
    if (!Hand::instance().holds(this))
        return;
    BulletBodyControl* const control = findBodyControl(getAgentNode());
    if (!control || !input()->isButtonCodePressed(input()->createMouseCode(leftButton))) {
        letGo();
        return;
    }
    const auto vector = [](const gmtl::Vec<double, 3>& v) { return osg::Vec3d(v[0], v[1], v[2]); };
    dynamics::DynamicsBody& body = *findBody(getAgentNode());
    const osg::Vec3d place = grip * poseOf(body);
    const osg::Vec3d arm = place - vector(control->getCentreOfMass());
    const osg::Vec3d spin = vector(control->getAngularVelocity());
    const osg::Vec3d velocity = vector(control->getLinearVelocity()) + (spin ^ arm);
    const osg::Vec3d stretch = Hand::instance().getPlace(depth) - place;

    const double tick = SimulationTime::tick;
    // A spring that is faster than the steps would throw the body about.
    const double rate = std::max(0.0, std::min(0.3 / tick, 2 * osg::PI * fields.frequency));
    const osg::Vec3d push = (stretch * (rate * rate) - velocity * (2 * damping * rate)) * (control->getMass() * tick);
    const osg::Vec3f slowed(spin * std::max(0.0, 1 - spinDamping * tick));
    body.setAngularVelocity({slowed.x(), slowed.y(), slowed.z()});
    control->applyImpulse({push.x(), push.y(), push.z()}, {place.x(), place.y(), place.z()});
}

agent::AccessorWithObject DragComponent::getAccessor(const std::string& fieldName) {
    static agent::Accessor<double> frequency(offsetof(Fields, frequency));
    if (fieldName == "frequency")
        return {&frequency, &fields};
    return Component::getAccessor(fieldName);
}

void DragComponent::getFieldNames(std::list<std::string>& names) {
    Component::getFieldNames(names);
    names.emplace_back("frequency");
}

} // namespace tessarin::viewer
