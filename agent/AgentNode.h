#pragma once

#include <agent/AgentEvent.h>
#include <agent/AgentNodeHandle.h>
#include <agent/Export.h>
#include <agent/Forward.h>
#include <agent/Listing.h>
#include <agent/SimObject.h>
#include <dynamics/Forward.h>

#include <gmtl/Matrix.h>
#include <gmtl/Quat.h>
#include <gmtl/Vec.h>

#include <osg/Transform>
#include <osg/ref_ptr>

#include <sigc++/functors/slot.h>
#include <sigc++/signal.h>

#include <cstdint>
#include <iosfwd>
#include <list>
#include <set>
#include <string>
#include <vector>

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::agent {

class ComponentHandle;
struct DocumentTransform;

/// A named object in a tree of agents: the unit of the simulation.
///
/// An agent owns its children and its components. It holds one OpenSceneGraph transform, which mirrors the tree in the
/// scene graph: a child's transform hangs under its parent's, and the scene nodes of the components hang under the
/// agent's. The transform is the only store of the agent's pose, and it leads back to the agent.
///
/// Nothing in an agent runs by itself. A host sends events with sendEvent, which call the hooks of the components that
/// asked for them, depth first down the tree, and then delete the children that are marked for removal.
///
/// Ownership: what stands in a parent's list belongs to the parent and is deleted by its destructor or, marked with
/// markForRemoval, by its next sendEvent. What stands in no list, a root or an agent taken out by removeChild, belongs
/// to whoever holds the pointer. Hooks may change the tree while an event runs in any way that these rules allow, the
/// agent being visited included; an agent that an event is passing through is never deleted by a nested event.
///
/// Agents belong to one thread, that of the frame loop and of the viewer's event traversal. Trees are walked by
/// recursion, so their depth is bounded by the stack: with the usual 8 MB, about ten thousand levels.
class TESSARIN_AGENT_EXPORT AgentNode : public SimObject {
public:
    /// An agent without a parent, with a MatrixTransform of its own at the identity.
    explicit AgentNode(const std::string& name = std::string());

    /// A copy is a view of its source: it sees the same children, components and transform and shares the slots of the
    /// signals, but deletes and detaches none of them, and searches by name don't find it. As the transform is the
    /// source's own, a copy must not come to hang below its source: the scene graph would lead round in a circle.
    AgentNode(const AgentNode& other);

    /// Makes this agent a view of the other. What it held before is detached from it and belongs to the caller.
    /// @param other not above this agent.
    AgentNode& operator=(const AgentNode& other);

    /// Takes the agent's transform out of the scene graph, then deletes the components, then the children, in list
    /// order. An agent in a parent's list is not to be deleted from outside: call removeChild first, or markForRemoval
    /// instead.
    ~AgentNode() override;

    /// "AgentNode".
    const char* getClassName() override;

    /// @name Tree
    /// @{

    /// Makes a child of that name, adds it as the last one and returns it.
    AgentNode* addChild(const std::string& name);

    /// Takes ownership of an agent and appends it to the children; its transform goes under this agent's. A child that
    /// is listed already is listed once more, and one that has another parent stays in that parent's list too: call
    /// removeChild there to move it.
    /// @param child not null, and neither this agent nor one above it.
    void addChild(AgentNode* child);

    /// The first direct child of that name, or null.
    AgentNode* getChild(const std::string& name);

    /// The first direct child of that name, made and added if there is none.
    AgentNode* getOrAddChild(const std::string& name);

    /// The children themselves, in the order of addition. Entries may be read and reordered through it, outside of
    /// events; they are added and taken out by addChild and removeChild alone, and not spliced from another list.
    /// @{
    std::list<AgentNode*>& getChildren() { return children; }
    const std::list<AgentNode*>& getChildren() const { return children; }
    /// @}

    /// Takes every entry of the child out of the list and its transform from under this agent's. The child belongs to
    /// the caller from then on; its getParent goes on naming this agent. The list stays as it is if it holds no such
    /// child.
    void removeChild(AgentNode* child);

    /// The agent that took this one last with addChild, also after removeChild; null at a root, and when that agent is
    /// gone.
    AgentNode* getParent();

    /// The first agent of that name among all that live, in the order of their construction and whether or not they are
    /// in a tree; null if there is none. A walk over all agents.
    static AgentNode* getAgentNode(const std::string& name);

    /// The agent behind a transform; null if the transform is null, belongs to no agent, or its agent is gone.
    static AgentNode* getAgentNode(osg::ref_ptr<osg::Transform> transform);

    osg::ref_ptr<osg::Transform> getOsgTransform();

    /// Puts another transform in the place of the agent's, and makes it lead to this agent. The scene graph isn't
    /// touched: hang the transform where it belongs, and the children's transforms and the components' nodes under it.
    /// Null leaves the agent without one. A body's pose comes to the new transform with the next AgentEvent::UPDATE.
    void setOsgTransform(osg::ref_ptr<osg::Transform> transform);

    /// True if an agent of that name stands among the descendants, as many levels down as the depth says: 1 looks at
    /// the direct children, less than 1 at nothing.
    bool hasAgent(const std::string& name, int depth) const;

    /// Asks the parent to delete this agent at the end of its next sendEvent, of any event. Until then the agent goes
    /// on receiving events. An agent that an event is passing through, or that is above one, stays until the first such
    /// end after that. There is no way back, and a root is not deleted.
    void markForRemoval();

    bool getMarkedForRemoval() const { return markedForRemoval; }

    /// Calls the slot for each direct child, in list order. The slot may change the tree.
    void visitChildren(sigc::slot<void, AgentNode*> slot);

    /// Calls the slot for each component, in list order. The slot may attach and remove components.
    void visitComponents(sigc::slot<void, Component*> slot);

    /// The weight of this agent when the agent under the cursor is looked for: the highest wins, 1 at first, and an
    /// agent below 0 is never found.
    /// @{
    int getSelectionPriority() const { return selectionPriority; }
    void setSelectionPriority(int priority) { selectionPriority = priority; }
    /// @}
    /// @}

    /// @name Components and events
    /// @{

    /// A new component of a class that SimObjectDB knows, as Component::createComponent makes it.
    static Component* createComponent(const std::string& className);

    /// Makes a component of that class, names it after the class and attaches it. Null, and nothing changed, if there
    /// is no such class. This and the other operations that make a component give null too if its attached() has taken
    /// it off.
    Component* addComponent(const std::string& className);

    /// Takes ownership of a component and attaches it: its scene node goes under the transform, its hooks are connected
    /// to the events that it wants, and last its attached() is called. A component is to be attached once.
    /// @return its argument, also if attached() has deleted it; null does nothing.
    Component* addComponent(Component* component);

    /// The first component of that name, or null.
    Component* getComponent(const std::string& name);

    /// The first component of that name; if there is none, a new one of the class of that name, or null if there is no
    /// such class.
    Component* getOrAddComponent(const std::string& name);

    /// The first component of that name, whatever its class; if there is none, a new one of the class with that name,
    /// or null if there is no such class.
    Component* getOrAddComponent(const std::string& className, const std::string& name);

    /// Detaches a component: its scene node leaves the transform and its hooks fall silent at once, also in the event
    /// that is just running. It belongs to the caller from then on.
    void removeComponent(Component* component);

    /// The rigid body component attached last, or null.
    RigidBodyComponent* getRigidBody() { return rigidBody; }

    /// Sends an event through this agent and its branch: the hooks of the components, in the order of attachment, then
    /// each child in list order with all below it, and last the children that are marked for removal are deleted. A
    /// child added meanwhile is visited, one taken out is not, and one that leaves and comes back is visited once.
    void sendEvent(AgentEvent::_AgentEventEnum event);

    /// Calls onCollision of every component of this agent, in list order. The library never calls it: whoever detects
    /// contacts does.
    void onCollision(CollisionData& collision);
    /// @}

    /// @name Transforms
    /// The local matrix is that of the transform, a MatrixTransform or a PositionAttitudeTransform; a transform of
    /// another kind, or none, reads as the identity and ignores writes. Lengths are in the scene's units. Matrices and
    /// quaternions cross between GMTL and OpenSceneGraph number by number, in storage order.
    /// @{
    gmtl::Matrix<double, 4, 4> getMatrix();

    /// Writes the local matrix. A PositionAttitudeTransform takes over translation and rotation alone. An active rigid
    /// body overwrites it at the next AgentEvent::UPDATE.
    /// @{
    void setMatrix(const gmtl::Matrix<double, 4, 4>& matrix);
    void setMatrix(const gmtl::Matrix<float, 4, 4>& matrix);
    /// @}

    /// @{
    gmtl::Vec<double, 3> getPosition();
    void setPosition(const gmtl::Vec<double, 3>& position);
    /// @}

    /// A unit quaternion x, y, z, w as long as the matrix has no scale.
    /// @{
    gmtl::Quat<double> getRotation();
    void setRotation(const gmtl::Quat<double>& rotation);
    /// @}

    /// The product of all transforms from the root of the scene graph down to the agent's own, along the first path if
    /// there are several; for a PositionAttitudeTransform the local matrix. Walks up the scene graph at each call.
    gmtl::Matrix<double, 4, 4> getWorldMatrix();
    gmtl::Vec<double, 3> getWorldPosition();
    gmtl::Quat<double> getWorldRotation();

    /// A value that the host may keep with an agent. No body and no transform has to do with it.
    /// @{
    const gmtl::Vec<float, 3>& getVelocity() const { return velocity; }
    void setVelocity(const gmtl::Vec<float, 3>& newVelocity) { velocity = newVelocity; }
    /// @}
    /// @}

    /// @name Documents
    /// Documents are XML with the root AgentNode; docs/documents.md tells the format. What can't be read is answered by
    /// null or left out, with a log line in the category "agent" at level 300.
    /// @{

    /// Makes an agent and its branch from a document and sends it AgentEvent::AGENT_CREATED. It has no parent and
    /// belongs to the caller. Null if the text is no document, its root is no AgentNode, or a hook has deleted the
    /// agent.
    /// @param sourceName names the document in messages, as in "(crane.xml:17)"; without it they tell the line alone.
    /// @{
    static AgentNode* createFromXml(std::istream& stream);
    static AgentNode* createFromXml(std::istream& stream, const std::string& sourceName);
    static AgentNode* createFromXmlString(const std::string& text);
    static AgentNode* createFromXmlString(const std::string& text, const std::string& sourceName);
    static AgentNode* createFromXml(xml_parser::XMLNode* node);
    /// @}

    /// Makes a component from an element and sets its fields. It is on no agent, not initialised, and belongs to the
    /// caller. Null if the element's class is not to be had.
    static Component* createComponentFromXml(xml_parser::XMLNode* node);

    /// Applies a document to this agent and its branch: what it names is found by name and changed, what is missing is
    /// made, what it doesn't name stays. Last AgentEvent::AGENT_MODIFIED is sent, except if the text is no document.
    /// @param sourceName as above.
    /// @{
    void modifyWithXml(std::istream& stream);
    void modifyWithXml(std::istream& stream, const std::string& sourceName);
    void modifyWithXml(const std::string& text);
    void modifyWithXml(const std::string& text, const std::string& sourceName);
    void modifyWithXml(xml_parser::XMLNode* node);
    /// @}

    /// The agent and its branch as a new document tree, which belongs to the caller. What its components do to tell
    /// their fields must not change the tree. Readers refuse a document that is nested deeper than 1,000 elements, of
    /// which the deepest agent takes three or more: its own, its Transform, and what stands in that.
    xml_parser::XMLNode* createXml();

    /// Prints the agent and its branch as a document, with a line at level 300 in the category "xml" if it is deeper
    /// than readers take.
    void createXml(std::ostream& stream);
    /// @}

    /// @name Physics
    /// @{

    /// Moves every rigid body of this branch by the same offset at once, in the frame of the bodies' poses, and stops
    /// it. Transforms follow at the next AgentEvent::UPDATE; agents without a body stay where they are.
    void magicMove(const gmtl::Vec<double, 3>& offset);

    /// The bodies of all rigid body components of this branch; a component without a body adds a null entry.
    std::set<dynamics::DynamicsBody*> getDynamicsBodies() const;

    /// The joints of all joint components of this branch; a component without a joint adds a null entry.
    std::set<dynamics::DynamicsJoint*> getDynamicsJoints() const;

    /// The simulation's dynamics world, which reads the physics of model files. The host sets it before the first such
    /// file is loaded, owns it, and sets null before it goes.
    static dynamics::DynamicsWorld* dynamicsWorld;
    /// @}

protected:
    /// What magicMove does, for a branch that begins at any node.
    void magicMoveRecursive(AgentNode* node, const gmtl::Vec<double, 3>& offset);

private:
    friend class AgentNodeHandle;
    friend class Component;

    struct Visit;
    template <class T>
    struct Walk;
    struct ChildWalk;
    struct ComponentWalk;
    struct LookUps;

    void deleteChild(AgentNode* child);
    void deleteComponent(Component* component);

    void listChild(AgentNode* child);
    int unlistChild(AgentNode* child);
    void eraseChild(std::list<AgentNode*>::iterator entry);
    std::list<AgentNode*>::iterator findChild(AgentNode* child);
    void checkEntries();
    bool isEntryOf(const AgentNode* child, std::list<AgentNode*>::iterator place) const;
    void adoptEntries();
    void listComponent(Component* component);
    int unlistComponent(Component* component);
    void releaseAll();
    void viewListsOf(const AgentNode& other);
    void updateRigidBody();
    void forgetPoses();
    void destroyComponents();
    void destroyChildren();
    void expireHandles();
    void removeOsgNode(osg::Node* node, int times);
    static void tellAgentNode(Component* component, AgentNode* node);
    static osg::Node* osgNodeOf(Component* component);
    bool holds(const ComponentHandle& handle) const;
    bool isAbove(const AgentNode* node) const;
    Component* attachNew(const ComponentHandle& made);

    void collectBodies(std::set<dynamics::DynamicsBody*>& bodies) const;
    void collectJoints(std::set<dynamics::DynamicsJoint*>& joints) const;

    void connect(Component* component, AgentEvent::_AgentEventEnum event);
    void dispatchEvent(AgentEvent::_AgentEventEnum event);
    void dispatchFrom(std::list<AgentNode*>::iterator entry, AgentEvent::_AgentEventEnum event);
    bool listens(AgentEvent::_AgentEventEnum event) const;
    bool isSilentLeaf(AgentEvent::_AgentEventEnum event) const;
    void prefetchNext(std::list<AgentNode*>::iterator entry) const;
    void removeMarkedChildren();
    std::vector<AgentNode*> markedChildrenToDelete() const;
    void detachTransforms(const std::vector<AgentNode*>& leaving);
    void hangInOrder(AgentNode* child);
    bool owns(const AgentNode* child) const { return !child->listing.isSharedWith(this); }
    bool isVisited() const;

    static AgentNode* createAndTell(xml_parser::XMLNode* node);
    static void deleteUnheld(AgentNode* agent);
    static void deleteUnheld(Component* component);
    static Component* findVisualModel(AgentNode* agent);
    static bool tieGeometry(GeometryComponent& geometry);
    static AgentNode* internalCreateFromXml(xml_parser::XMLNode* node);
    static Component* modifyComponentWithXml(Component* component, xml_parser::XMLNode* node);
    void internalModifyWithXml(xml_parser::XMLNode* node);
    void modifyChildWithXml(xml_parser::XMLNode* element);
    bool modifyOrAddComponent(xml_parser::XMLNode* element, const DocumentTransform& transform);

    sigc::signal<void> eventSignals[AgentEvent::COUNT];
    std::list<Component*> components;
    RigidBodyComponent* rigidBody = nullptr;
    osg::ref_ptr<osg::Transform> osgTransform;
    int selectionPriority = 1;
    const std::uint32_t serial = ++lastSerial; // tells the agent from a later one at its address
    AgentNodeHandle parent;

    // A pass over agents that don't listen reads just these and where the children begin: all of it in one block of 16
    // bytes, which no cache line splits.
    alignas(16) bool sweepIsDue = false; // a child may be marked for removal
    bool knowsEntries = true;            // the children's entries are where listChild has put them
    // A bit for each event whose signal may have a slot. The signals of a copy and its source are the same, so neither
    // can know, and all bits are set.
    mutable std::uint16_t connectedEvents = 0;
    std::uint32_t childCount = 0; // how many entries the list should have
    std::list<AgentNode*> children;

    gmtl::Vec<float, 3> velocity;
    bool markedForRemoval = false;
    bool ownsTransform = true;
    Visit* visits = nullptr;             // what is under way on this agent, the innermost first
    AgentNodeHandle* watchers = nullptr; // the chain of handles that watch this agent
    Listing listing;
    std::list<AgentNode*>::iterator listEntry; // in the list of the first agent that listing names
    std::list<AgentNode*>::iterator allAgentsEntry;

    static std::list<AgentNode*> allAgents;
    static std::uint32_t lastSerial;
};

} // namespace tessarin::agent
