#pragma once

#include <agent/AbstractAccessor.h>
#include <agent/AgentEvent.h>
#include <agent/AgentNodeHandle.h>
#include <agent/Export.h>
#include <agent/Forward.h>
#include <agent/Listing.h>
#include <agent/SimObject.h>

#include <sigc++/connection.h>

#include <iosfwd>
#include <list>
#include <string>

namespace osg {
class Node;
}

namespace tessarin::agent {

/// A named piece of behaviour or content that hangs on one agent. All that an agent does beyond being a node in a tree
/// is done by its components: they receive the agent's events through hooks, may put a scene graph node under the
/// agent's transform, and may show fields by name, so that documents can read and write them.
///
/// The life of a component: built, by a factory or with new; named and given its field values; attached with
/// AgentNode::addComponent; initialised, where a document makes it; running, its hooks called inside
/// AgentNode::sendEvent; and ended, either detached with AgentNode::removeComponent and so the caller's again, or
/// deleted by its agent's destructor. A component on an agent belongs to that agent.
///
/// A host's class overrides getClassName, the hooks that it wants and getSupportedEvents, which names them; for a class
/// that does nothing but act once a frame see BehaviourComponent. A hook may change the tree: add, remove and mark
/// agents, attach and remove components, its own included, send further events, and apply documents. Hooks run on the
/// thread of the caller of sendEvent. An exception that a hook lets out is caught and logged.
class TESSARIN_AGENT_EXPORT Component : public SimObject {
public:
    /// A component that is deleted while an agent holds it leaves that agent's list and signals; its scene node stays.
    ~Component() override;

    const char* getClassName() override = 0;

    /// The last step of making a component from a document: its fields are set and it is on its agent. Nothing else in
    /// the library calls it.
    /// @return the component itself.
    virtual Component* initialize();

    /// Tells which events the component wants. Called once per attachment.
    /// @param events the wanted events are appended; a value that stands twice is heard twice.
    /// @return true if the list is to be followed, also when it is empty. With false, the default, the component hears
    /// every event, and a line at level INFO says so.
    virtual bool getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events);

    /// Called by the agent that attaches the component, and with null by the one that removes it.
    virtual void setAgentNode(AgentNode* node);

    /// @name Hooks
    /// Each is called for the event of its name; see AgentEvent.
    /// @{
    virtual void onAgentCreated();
    virtual void onAgentModified();
    virtual void prePhysicsUpdate();
    virtual void prePhysicsTick();
    virtual void postPhysicsTick();
    virtual void postPhysicsUpdate();
    virtual void update();
    virtual void postUpdate();
    virtual void mousePress();
    virtual void mouseRelease();
    virtual void mouseDrag();
    virtual void mouseEnter();
    virtual void mouseOver();
    virtual void mouseExit();
    virtual void windowResize();
    /// @}

    /// The last step of AgentNode::addComponent: the component is in the agent's list, its scene node hangs under the
    /// agent's transform, and its hooks are connected.
    virtual void attached();

    /// Called by AgentNode::onCollision, whatever getSupportedEvents says.
    virtual void onCollision(CollisionData& collision);

    /// How to reach a field by name: an empty pair if the component has no such field. Neither this nor what the
    /// accessor does may change the tree.
    virtual AccessorWithObject getAccessor(const std::string& fieldName);

    /// Appends the names of the component's fields.
    virtual void getFieldNames(std::list<std::string>& names);

    /// The scene node that the component wants under its agent's transform, or null. Asked when the component is
    /// attached and when it is taken off.
    virtual osg::Node* getOsgNode();

    /// A copy has the source's name, connections and agent, but it stands in no agent's list and the signals go on
    /// calling the source.
    Component(const Component&) = default;

    /// Takes over what the copy constructor does; a component on an agent keeps its connections and its agent.
    Component& operator=(const Component& other);

    /// A new component of a class that SimObjectDB knows, unnamed and on no agent. It belongs to the caller. Null if
    /// the name isn't registered or leads to something other than a component.
    static Component* createComponent(const std::string& className);

    /// The agent that holds the component; null before it is attached and after it is removed.
    /// @{
    AgentNode* getAgentNode() const { return agentNode; }
    AgentNode* getAgentNode() { return agentNode; }
    /// @}

    /// Input::instance(): where a component asks for buttons and axes.
    Input* input();

    /// AgentNode::hasAgent on the component's agent, which must be set.
    bool hasAgent(const std::string& name, int depth) const;

    /// Sets a field of type std::string by name; a field of another type, or none, is left alone.
    /// @return the component itself, so that calls can be chained.
    Component* setValue(const char* fieldName, const char* value);

    /// A field as text; the empty string if the component has no such field.
    std::string getAsString(const std::string& fieldName);

    /// Sets a field from text; nothing happens if the component has no such field or the text is no value for it.
    void setAsString(const std::string& fieldName, const std::string& text);

    /// Writes nothing. Classes with fields have an operation of this name that writes them.
    void printValues(std::ostream& stream);

protected:
    Component() = default;

    /// True if an agent's list holds the component; a copy of a component on an agent is on none.
    bool isOnAgent() const { return !listing.isEmpty(); }

    /// One for each hook that was connected to a signal; the entries stay when they are disconnected.
    std::list<sigc::connection> connections;

    /// Null on no agent, and when the agent is gone.
    AgentNodeHandle agentNode;

private:
    friend class AgentNode;

    void disconnectAll();

    Listing listing;
};

} // namespace tessarin::agent
