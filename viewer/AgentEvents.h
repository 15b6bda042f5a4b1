#pragma once

#include <agent/AgentNodeEventHandler.h>

namespace tessarin::viewer {

/// Sends agents their mouse events as AgentNodeEventHandler does, and shares the mouse with the camera: a press on an
/// agent selects it, and only while something is dragged are presses and drags kept from the camera.
class AgentEvents : public agent::AgentNodeEventHandler {
public:
    using agent::AgentNodeEventHandler::AgentNodeEventHandler;
    using agent::AgentNodeEventHandler::handle;

    bool handle(const osgGA::GUIEventAdapter& event, osgGA::GUIActionAdapter& action, osg::Object* object,
                osg::NodeVisitor* visitor) override;

protected:
    ~AgentEvents() override;
};

} // namespace tessarin::viewer
