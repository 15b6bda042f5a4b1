#include <agent/AgentNodeEventHandler.h>

#include <agent/AgentNode.h>
#include <agent/Input.h>

#include <osg/Group>
#include <osg/Transform>
#include <osgUtil/LineSegmentIntersector>

namespace tessarin::agent {

namespace {

using Intersections = osgUtil::LineSegmentIntersector::Intersections;

AgentNode* findAgentUnderCursor(osgViewer::Viewer* viewer, int x, int y) {
    Intersections intersections;
    if (!viewer ||
        !viewer->computeIntersections(static_cast<float>(x), static_cast<float>(y), intersections, 0xFFFFFFFFu))
        return nullptr;

    AgentNode* best = nullptr;
    osg::Node* hit = nullptr;
    int bestPriority = -1;
    for (const auto& intersection : intersections) {
        const osg::NodePath& path = intersection.nodePath;
        for (auto node = path.rbegin(); node != path.rend(); ++node) {
            osg::Group* const group = (*node)->asGroup();
            osg::Transform* const transform = group ? group->asTransform() : nullptr;
            AgentNode* const agent = transform ? AgentNode::getAgentNode(transform) : nullptr;
            if (agent && agent->getSelectionPriority() > bestPriority) {
                best = agent;
                bestPriority = agent->getSelectionPriority();
                hit = path.back();
            }
        }
    }
    if (best)
        Input::instance()->setClickedNode(hit);
    return best;
}

} // namespace

AgentNodeEventHandler::AgentNodeEventHandler(AgentNode* agent, osgViewer::Viewer* newViewer)
    : rootAgentNode(agent), viewer(newViewer) {}

// NOLINTBEGIN(cppcoreguidelines-slicing): each base copies its own part.
AgentNodeEventHandler::AgentNodeEventHandler(const AgentNodeEventHandler& other)
    : osg::Object(other), osg::Callback(other), osgGA::GUIEventHandler(other), rootAgentNode(other.rootAgentNode),
      currentAgentNode(other.currentAgentNode), viewer(other.viewer),
      doFindAgentUnderCursor(other.doFindAgentUnderCursor) {}
// NOLINTEND(cppcoreguidelines-slicing)

AgentNodeEventHandler::~AgentNodeEventHandler() = default;

bool AgentNodeEventHandler::handle(const osgGA::GUIEventAdapter& event, osgGA::GUIActionAdapter&, osg::Object*,
                                   osg::NodeVisitor*) {
    const int x = static_cast<int>(event.getX());
    const int y = static_cast<int>(event.getY());
    switch (event.getEventType()) {
    case osgGA::GUIEventAdapter::PUSH:
        Input::instance()->pressMouseButton(event.getButton());
        return sendToAgentUnderCursor(x, y, AgentEvent::MOUSE_PRESS);
    case osgGA::GUIEventAdapter::RELEASE:
        Input::instance()->releaseMouseButton(event.getButton());
        return sendToAgentUnderCursor(x, y, AgentEvent::MOUSE_RELEASE);
    case osgGA::GUIEventAdapter::DRAG:
        return sendToAgentUnderCursor(x, y, AgentEvent::MOUSE_DRAG);
    case osgGA::GUIEventAdapter::RESIZE:
        if (rootAgentNode)
            rootAgentNode->sendEvent(AgentEvent::WINDOW_RESIZE);
        handleFrame(x, y);
        return false;
    case osgGA::GUIEventAdapter::FRAME:
        handleFrame(x, y);
        return false;
    default:
        return false;
    }
}

bool AgentNodeEventHandler::sendToAgentUnderCursor(int x, int y, AgentEvent::_AgentEventEnum event) {
    AgentNode* const agent = findAgentUnderCursor(viewer.get(), x, y);
    if (!agent)
        return false;
    agent->sendEvent(event);
    return true;
}

void AgentNodeEventHandler::handleFrame(int x, int y) {
    Input::instance()->setMouse(x, y);
    if (doFindAgentUnderCursor)
        hover(findAgentUnderCursor(viewer.get(), x, y));
    if (currentAgentNode && currentAgentNode->getMarkedForRemoval())
        currentAgentNode = nullptr;
}

/// Tells the agents that the cursor is over one of them. The hooks may end any agent, the one found too.
void AgentNodeEventHandler::hover(AgentNode* agent) {
    if (!agent)
        return;
    const AgentNodeHandle found(agent);
    if (found.get() != currentAgentNode.get()) {
        if (currentAgentNode)
            currentAgentNode->sendEvent(AgentEvent::MOUSE_EXIT);
        if (found)
            found->sendEvent(AgentEvent::MOUSE_ENTER);
    }
    if (found)
        found->sendEvent(AgentEvent::MOUSE_OVER);
    currentAgentNode = found;
}

} // namespace tessarin::agent
