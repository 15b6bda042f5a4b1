#include <viewer/Hand.h>

#include <agent/AgentNode.h>
#include <agent/Input.h>

#include <osg/Camera>
#include <osg/Viewport>

namespace tessarin::viewer {

using agent::AgentNode;

namespace {

/// As the event handler chooses: the highest priority, of equals the deepest. A model's nodes may hang in several
/// places, of which one belongs to an agent.
AgentNode* findAgentAbove(osg::Node& node) {
    AgentNode* best = node.asTransform() ? AgentNode::getAgentNode(node.asTransform()) : nullptr;
    for (unsigned i = 0; i < node.getNumParents(); ++i) {
        AgentNode* const other = findAgentAbove(*node.getParent(i));
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

    osg::Vec3d centre, up;
    camera.getViewMatrixAsLookAt(eye, centre, up);
    look = centre - eye;
    look.normalize();
    osg::Vec3d side = look ^ up;
    side.z() = 0;
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
