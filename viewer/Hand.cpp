#include <viewer/Hand.h>

#include <viewer/Upward.h>

#include <agent/AgentNode.h>
#include <agent/Input.h>

#include <osg/Camera>
#include <osg/Switch>
#include <osg/Viewport>

namespace tessarin::viewer {

using agent::AgentNode;

namespace {

/// A body's node hangs below its agent and, switched off, in the model that another agent may show.
bool isShownBy(osg::Group& parent, osg::Node& child) {
    const osg::Switch* const choice = parent.asSwitch();
    return !choice || choice->getChildValue(&child);
}

/// As the event handler chooses: the highest priority, of equals the deepest.
AgentNode* findAgentAbove(osg::Node& node) {
    AgentNode* best = node.asTransform() ? AgentNode::getAgentNode(node.asTransform()) : nullptr;
    for (unsigned i = 0; i < node.getNumParents(); ++i) {
        osg::Group& parent = *node.getParent(i);
        AgentNode* const other = isShownBy(parent, node) ? findAgentAbove(parent) : nullptr;
        if (other && (!best || other->getSelectionPriority() > best->getSelectionPriority()))
            best = other;
    }
    return best;
}

} // namespace

Hand& Hand::instance() {
    static Hand hand;
    return hand;
}

void Hand::aim(const osg::Camera& camera, double x, double y) {
    if (!camera.getViewport())
        return;
    const osg::Matrixd toWindow =
        camera.getViewMatrix() * camera.getProjectionMatrix() * camera.getViewport()->computeWindowMatrix();
    const osg::Matrixd toWorld = osg::Matrixd::inverse(toWindow);
    from = osg::Vec3d(x, y, 0) * toWorld;
    direction = osg::Vec3d(x, y, 1) * toWorld - from;
    direction.normalize();

    osg::Vec3d centre, upInPicture;
    camera.getViewMatrixAsLookAt(eye, centre, upInPicture);
    look = centre - eye;
    look.normalize();
    up = findUp();
    osg::Vec3d side = look ^ upInPicture;
    side -= up * (side * up);
    if (side.normalize() > 0)
        right = side;
}

osg::Vec3d Hand::getPlace(double depth) const {
    return from + direction * ((depth - getDepth(from)) / (direction * look));
}

AgentNode* Hand::getPointed() const {
    osg::Node* const node = agent::Input::instance()->getClickedNode();
    return node ? findAgentAbove(*node) : nullptr;
}

} // namespace tessarin::viewer
