#pragma once

#include <agent/AgentEvent.h>
#include <agent/AgentNodeHandle.h>
#include <agent/Export.h>
#include <agent/Forward.h>

#include <osg/observer_ptr>
#include <osgGA/GUIEventHandler>
#include <osgViewer/Viewer>

namespace tessarin::agent {

/// The bridge from a scene view to the agents. Among the event handlers of an osgViewer::Viewer it passes mouse buttons
/// and the mouse position on to Input, finds the agent under the cursor and sends it the mouse events, and tells the
/// whole tree when the window is resized. Keys and the wheel are none of its business.
///
/// The agent under the cursor is found by a ray: of all agents on the paths of all hits the one with the highest
/// selection priority wins, among equals that of the nearest hit and the deepest in the scene graph. Events go to the
/// agent found, and so to its branch; an agent that the cursor leaves for empty space is left only when another one is
/// found.
///
/// The host makes the handler with the root agent and the viewer and adds it to that viewer. Agents may end at any
/// time, from inside the hooks of the very events that the handler sends too.
class TESSARIN_AGENT_EXPORT AgentNodeEventHandler : public osgGA::GUIEventHandler {
public:
    /// @param agent where AgentEvent::WINDOW_RESIZE starts; not owned.
    /// @param viewer whose view casts the rays; not owned.
    AgentNodeEventHandler(AgentNode* agent, osgViewer::Viewer* viewer);
    AgentNodeEventHandler(const AgentNodeEventHandler& other);
    AgentNodeEventHandler& operator=(const AgentNodeEventHandler&) = delete;

    using osgGA::GUIEventHandler::handle;

    /// @return true if a press, release or drag hit an agent: other handlers see that the event was used.
    bool handle(const osgGA::GUIEventAdapter& event, osgGA::GUIActionAdapter& action, osg::Object* object,
                osg::NodeVisitor* visitor) override;

    /// Forgets the agent that the cursor is over. No event is sent.
    void clearCurrentAgentNode() { currentAgentNode = nullptr; }

    /// Whether each frame looks for the agent under the cursor, at the cost of a ray: without it no agent is entered,
    /// hovered over or left, but presses, releases and drags still find theirs. On at first.
    /// @{
    bool getDoFindAgentUnderCursor() const { return doFindAgentUnderCursor; }
    void setDoFindAgentUnderCursor(bool find) { doFindAgentUnderCursor = find; }
    /// @}

protected:
    ~AgentNodeEventHandler() override;

private:
    bool sendToAgentUnderCursor(int x, int y, AgentEvent::_AgentEventEnum event);
    void handleFrame(int x, int y);
    void hover(AgentNode* agent);

    AgentNodeHandle rootAgentNode;
    AgentNodeHandle currentAgentNode;
    osg::observer_ptr<osgViewer::Viewer> viewer;
    bool doFindAgentUnderCursor = true;
};

} // namespace tessarin::agent
