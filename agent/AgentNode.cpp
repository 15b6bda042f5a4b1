#include <agent/AgentNode.h>

#include <agent/AgentNodeLookUps.h>
#include <agent/AgentNodeWalk.h>
#include <agent/Component.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SceneGraph.h>

#include <osg/MatrixTransform>

#include <algorithm>
#include <cassert>
#include <iterator>
#include <vector>

namespace tessarin::agent {

std::list<AgentNode*> AgentNode::allAgents;
std::uint32_t AgentNode::lastSerial = 0;
dynamics::DynamicsWorld* AgentNode::dynamicsWorld = nullptr;

AgentNode::AgentNode(const std::string& name) : velocity(0.0f, 0.0f, 0.0f) {
    setName(name);
    const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform;
    transform->setName("AgentNode MatTrans " + name);
    setOsgTransform(transform);
    allAgentsEntry = allAgents.insert(allAgents.end(), this);
}

AgentNode::AgentNode(const AgentNode& other) : SimObject(other), allAgentsEntry(allAgents.end()) {
    viewListsOf(other);
}

AgentNode& AgentNode::operator=(const AgentNode& other) {
    if (this == &other)
        return *this;
    const bool cycle = other.isAbove(this);
    assert(!cycle && "AgentNode::operator=: an agent cannot be its own descendant.");
    if (cycle)
        return *this;
    releaseAll();
    if (ownsTransform && osgTransform)
        removeFromParents(*osgTransform);
    SimObject::operator=(other);
    viewListsOf(other);
    return *this;
}

/// Makes this agent, which holds nothing, see what the other holds.
void AgentNode::viewListsOf(const AgentNode& other) {
    // By way of a copy: from one signal without slots to another an assignment shares nothing.
    for (int event = 0; event < AgentEvent::COUNT; ++event)
        eventSignals[event] = sigc::signal<void>(other.eventSignals[event]);
    connectedEvents = 0xFFFF;
    other.connectedEvents = 0xFFFF;

    LookUps::forget(*this);
    components = other.components;
    for (Component* const component : components)
        component->listing.enter(this, true);
    children = other.children;
    childCount = static_cast<std::uint32_t>(children.size());
    for (AgentNode* const child : children)
        child->listing.enter(this, true);

    rigidBody = other.rigidBody;
    osgTransform = other.osgTransform;
    ownsTransform = false;
    selectionPriority = other.selectionPriority;
    parent = other.parent;
    if (other.markedForRemoval)
        markForRemoval();
    velocity = other.velocity;
}

/// Lets go of all components and children; what was owned belongs to the caller.
void AgentNode::releaseAll() {
    while (!components.empty()) {
        Component* const component = components.front();
        if (component->listing.isSharedWith(this))
            unlistComponent(component);
        else
            removeComponent(component);
    }
    while (!children.empty()) {
        AgentNode* const child = children.front();
        if (child->listing.isSharedWith(this))
            unlistChild(child);
        else
            removeChild(child);
    }
}

AgentNode::~AgentNode() {
    expireHandles();
    // To everybody else the agent is gone, but its components meet it until their own end.
    for (Component* const component : components)
        if (!component->listing.isSharedWith(this))
            component->agentNode = this;
    if (allAgentsEntry != allAgents.end())
        allAgents.erase(allAgentsEntry);
    LookUps::forget(*this);
    Visit::endAll(*this);
    checkEntries();
    for (AgentNode* const agent : listing.getAgents())
        agent->unlistChild(this);

    for (ComponentWalk walk(*this); Component* component = walk.get(); walk.advance()) {
        if (!component->listing.isSharedWith(this))
            removeOsgNode(osgNodeOf(component), 1);
    }
    if (ownsTransform && osgTransform)
        removeFromParents(*osgTransform);
    destroyComponents();
    destroyChildren();
    expireHandles();
    LookUps::forget(*this);
}

void AgentNode::destroyComponents() {
    rigidBody = nullptr;
    while (!components.empty()) {
        Component* const component = components.front();
        const bool shared = component->listing.isSharedWith(this);
        unlistComponent(component);
        if (shared)
            continue;
        component->disconnectAll();
        for (AgentNode* const agent : component->listing.getAgents()) {
            const bool owned = !component->listing.isSharedWith(agent);
            const int entries = agent->unlistComponent(component);
            if (owned)
                agent->removeOsgNode(osgNodeOf(component), entries);
        }
        deleteComponent(component);
    }
}

void AgentNode::destroyChildren() {
    // Each child takes its own transform out of the scene, but from a wide group that takes quadratic time.
    constexpr std::size_t wide = 64;
    if (children.size() > wide) {
        std::vector<AgentNode*> leaving;
        std::copy_if(children.begin(), children.end(), std::back_inserter(leaving),
                     [this](const AgentNode* child) { return owns(child); });
        detachTransforms(leaving);
    }
    while (!children.empty()) {
        AgentNode* const child = children.front();
        const bool owned = owns(child);
        unlistChild(child);
        if (owned)
            deleteChild(child);
    }
}

void AgentNode::expireHandles() {
    while (watchers) {
        AgentNodeHandle* const handle = watchers;
        watchers = handle->next;
        handle->agent = nullptr;
        handle->next = nullptr;
        handle->link = nullptr;
    }
}

/// Takes a component's scene node from under the transform, as often as the component put it there.
void AgentNode::removeOsgNode(osg::Node* node, int times) {
    for (int i = 0; i < times && node && osgTransform; ++i)
        removeFromGroup(*osgTransform, *node);
}

void AgentNode::deleteChild(AgentNode* child) {
    ++hostCalls;
    delete child;
    ++hostCalls;
}

void AgentNode::deleteComponent(Component* component) {
    ++hostCalls;
    delete component;
    ++hostCalls;
}

const char* AgentNode::getClassName() {
    return "AgentNode";
}

} // namespace tessarin::agent
