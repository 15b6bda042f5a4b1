#include <viewer/AgentEvents.h>

#include <viewer/Hand.h>

namespace tessarin::viewer {

AgentEvents::~AgentEvents() = default;

bool AgentEvents::handle(const osgGA::GUIEventAdapter& event, osgGA::GUIActionAdapter& action, osg::Object* object,
                         osg::NodeVisitor* visitor) {
    Hand& hand = Hand::instance();
    const bool isOnAgent = agent::AgentNodeEventHandler::handle(event, action, object, visitor);
    switch (event.getEventType()) {
    case osgGA::GUIEventAdapter::PUSH:
        if (isOnAgent && event.getButton() == osgGA::GUIEventAdapter::LEFT_MOUSE_BUTTON)
            hand.select(hand.getPointed());
        return hand.isHolding();
    case osgGA::GUIEventAdapter::DRAG:
        return hand.isHolding();
    case osgGA::GUIEventAdapter::RELEASE: {
        const bool isMeant = hand.isHolding();
        if (event.getButton() == osgGA::GUIEventAdapter::LEFT_MOUSE_BUTTON)
            hand.letGo();
        return isMeant;
    }
    default:
        return false;
    }
}

} // namespace tessarin::viewer
