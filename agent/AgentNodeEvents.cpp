#include <agent/AgentNode.h>

#include <agent/AgentNodeWalk.h>
#include <agent/Component.h>
#include <agent/ComponentHandle.h>
#include <agent/HookGuard.h>
#include <agent/ListSearch.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SceneGraph.h>
#include <logging/Log.h>

#include <algorithm>
#include <cassert>
#include <vector>

namespace tessarin::agent {

using logging::Logger;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

namespace {

struct Hook {
    void (Component::*call)();
    const char* name;
};

// By the values of AgentEvent. The reserved value has no hook.
constexpr Hook eventHooks[AgentEvent::COUNT] = {
    {&Component::prePhysicsUpdate, "prePhysicsUpdate"},
    {&Component::prePhysicsTick, "prePhysicsTick"},
    {&Component::postPhysicsTick, "postPhysicsTick"},
    {&Component::postPhysicsUpdate, "postPhysicsUpdate"},
    {&Component::update, "update"},
    {&Component::postUpdate, "postUpdate"},
    {&Component::mousePress, "mousePress"},
    {&Component::mouseRelease, "mouseRelease"},
    {&Component::mouseDrag, "mouseDrag"},
    {&Component::mouseEnter, "mouseEnter"},
    {&Component::mouseOver, "mouseOver"},
    {&Component::mouseExit, "mouseExit"},
    {&Component::windowResize, "windowResize"},
    {nullptr, nullptr},
    {&Component::onAgentCreated, "onAgentCreated"},
    {&Component::onAgentModified, "onAgentModified"},
};

bool isEvent(AgentEvent::_AgentEventEnum event) {
    const int value = event;
    return value >= 0 && value < AgentEvent::COUNT;
}

} // namespace

Component* AgentNode::addComponent(const std::string& className) {
    const Visit visit(*this);
    Component* const component = createComponent(className);
    if (!component)
        return nullptr;
    const ComponentHandle handle(component);
    component->setName(className);
    if (!visit.isOver())
        addComponent(component);
    if (!visit.isOver())
        return holds(handle) ? component : nullptr;
    deleteUnheld(handle.get());
    return nullptr;
}

Component* AgentNode::addComponent(Component* component) {
    if (!component)
        return nullptr;
    const Visit visit(*this);
    const ComponentHandle handle(component);
    if (auto* const body = dynamic_cast<RigidBodyComponent*>(component))
        rigidBody = body;
    tellAgentNode(component, this);
    osg::Node* const node = handle.get() ? osgNodeOf(component) : nullptr;
    if (visit.isOver() || !handle.get()) {
        if (!visit.isOver())
            updateRigidBody();
        return component;
    }
    if (node && osgTransform)
        osgTransform->addChild(node);
    listComponent(component);

    std::list<AgentEvent::_AgentEventEnum> events;
    bool choosy = true;
    callHook("getSupportedEvents", [&] { choosy = component->getSupportedEvents(events); });
    if (visit.isOver() || !holds(handle))
        return component;
    if (choosy) {
        for (const AgentEvent::_AgentEventEnum event : events)
            connect(component, event);
    } else {
        TESSARIN_LOG(category, Logger::infoLevel,
                     "Component " << component->getClassName() << " does not implement getSupportedEvents.");
        for (int event = 0; event < AgentEvent::COUNT; ++event)
            connect(component, static_cast<AgentEvent::_AgentEventEnum>(event));
    }
    callHook("attached", [component] { component->attached(); });
    return component;
}

void AgentNode::tellAgentNode(Component* component, AgentNode* node) {
    callHook("setAgentNode", [&] { component->setAgentNode(node); });
}

osg::Node* AgentNode::osgNodeOf(Component* component) {
    osg::Node* node = nullptr;
    callHook("getOsgNode", [&] { node = component->getOsgNode(); });
    return node;
}

void AgentNode::listComponent(Component* component) {
    // The connections that a component on no agent still has are disconnected, or its source's if it is a copy.
    if (component->listing.isEmpty())
        component->connections.clear();
    components.push_back(component);
    component->listing.enter(this, false);
    if (componentWalks)
        ComponentWalk::appended(*this);
}

void AgentNode::connect(Component* component, AgentEvent::_AgentEventEnum event) {
    assert(isEvent(event) && "Component::getSupportedEvents names the sixteen agent events and no others.");
    if (!isEvent(event) || !eventHooks[event].call)
        return;
    const Hook& hook = eventHooks[event];
    component->connections.push_back(eventSignals[event].connect(
        [component, &hook] { callHook(hook.name, [component, &hook] { (component->*hook.call)(); }); }));
    connectedEvents = static_cast<std::uint16_t>(connectedEvents | 1u << event);
}

Component* AgentNode::getComponent(const std::string& name) {
    for (Component* const component : components)
        if (component->getName() == name)
            return component;
    return nullptr;
}

Component* AgentNode::getOrAddComponent(const std::string& name) {
    Component* const component = getComponent(name);
    return component ? component : addComponent(name);
}

Component* AgentNode::getOrAddComponent(const std::string& className, const std::string& name) {
    if (Component* const component = getComponent(name))
        return component;
    Component* const component = addComponent(className);
    if (component)
        component->setName(name);
    return component;
}

void AgentNode::removeComponent(Component* component) {
    assert(component && "AgentNode::removeComponent takes no null component.");
    if (!component)
        return;
    const Visit visit(*this);
    const ComponentHandle handle(component);
    tellAgentNode(component, nullptr);
    osg::Node* const node = handle.get() ? osgNodeOf(component) : nullptr;
    if (visit.isOver() || !handle.get())
        return;
    removeOsgNode(node, std::max(unlistComponent(component), 1));
    component->disconnectAll();
}

/// Takes every entry of the component out of the list and counts them.
int AgentNode::unlistComponent(Component* component) {
    int count = 0;
    auto entry = findFromBothEnds(components, component);
    while (entry != components.end()) {
        if (componentWalks)
            ComponentWalk::leaving(*this, entry, false);
        components.erase(entry);
        ++count;
        entry = component->listing.isRepeated() ? findFromBothEnds(components, component) : components.end();
    }
    component->listing.leave(this);
    if (rigidBody && static_cast<Component*>(rigidBody) == component)
        updateRigidBody();
    return count;
}

void AgentNode::updateRigidBody() {
    rigidBody = nullptr;
    for (auto entry = components.rbegin(); entry != components.rend() && !rigidBody; ++entry)
        rigidBody = dynamic_cast<RigidBodyComponent*>(*entry);
}

/// Whether the component is still there and in the list.
bool AgentNode::holds(const ComponentHandle& handle) const {
    const Component* const component = handle.get();
    if (!component || !component->listing.hasMoreAgents())
        return component && component->listing.getFirstAgent() == this;
    return std::find(components.begin(), components.end(), component) != components.end();
}

void AgentNode::sendEvent(AgentEvent::_AgentEventEnum event) {
    assert(isEvent(event) && "AgentNode::sendEvent takes the sixteen agent events and no others.");
    if (!isEvent(event))
        return;
    const Visit visit(*this);
    dispatchEvent(event);
}

// Large trees are bound by memory: the next child comes in while this one's branch is visited.
inline void AgentNode::prefetchNext(std::list<AgentNode*>::iterator entry) const {
    if (++entry != children.end())
        __builtin_prefetch(&(*entry)->children);
}

inline bool AgentNode::listens(AgentEvent::_AgentEventEnum event) const {
    return (connectedEvents >> event & 1u) != 0;
}

/// Has neither anybody to call nor children.
inline bool AgentNode::isSilentLeaf(AgentEvent::_AgentEventEnum event) const {
    return !listens(event) && children.empty();
}

void AgentNode::dispatchEvent(AgentEvent::_AgentEventEnum event) {
    auto entry = children.begin();
    bool sweep = false;
    if (!listens(event)) {
        // As long as nobody is called nothing can change, and no walk has to be known.
        for (; entry != children.end() && (*entry)->isSilentLeaf(event); ++entry) {
            sweep |= (*entry)->markedForRemoval;
        }
    }
    if (listens(event) || entry != children.end())
        dispatchFrom(entry, event, sweep);
    else if (sweep)
        removeMarkedChildren();
}

/// The whole dispatch where the agent listens; else that to the children from the entry on.
/// @param sweep one of the children before is marked for removal.
void AgentNode::dispatchFrom(std::list<AgentNode*>::iterator entry, AgentEvent::_AgentEventEnum event, bool sweep) {
    ChildWalk walk(*this);
    const unsigned marksBefore = marks;
    if (listens(event)) {
        eventSignals[event].emit();
        walk.begin();
    } else {
        walk.beginAt(entry);
    }
    for (; AgentNode* child = walk.get(); walk.advance()) {
        prefetchNext(walk.current);
        if (!child->isSilentLeaf(event))
            child->dispatchEvent(event);
        if (walk.isOnVisited() && child->markedForRemoval)
            sweep = true;
    }
    if (walk.node && (sweep || marks != marksBefore))
        removeMarkedChildren();
}

void AgentNode::removeMarkedChildren() {
    std::vector<AgentNode*> leaving;
    for (AgentNode* const child : children)
        // Inside another visit the agent may be one that that visit is passing through; it stays marked for a later
        // sweep.
        if (child->markedForRemoval && !child->listing.isSharedWith(this) && !(visits > 1 && child->isInUse()))
            leaving.push_back(child);
    if (leaving.empty())
        return;

    constexpr std::size_t many = 8;
    if (osgTransform && leaving.size() > many) {
        std::vector<osg::Node*> transforms;
        for (AgentNode* const child : leaving)
            if (child->osgTransform)
                transforms.push_back(child->osgTransform.get());
        removeManyFromGroup(*osgTransform, transforms);
    }

    const Visit visit(*this);
    ChildWalk walk(*this);
    for (walk.begin(); AgentNode* child = walk.get(); walk.advance()) {
        if (!child->markedForRemoval || child->listing.isSharedWith(this) || (visits > 2 && child->isInUse()))
            continue;
        eraseChild(walk.current, true);
        if (child->listing.isRepeated())
            unlistChild(child, true);
        child->listing.leave(this);
        deleteChild(child);
    }
}

/// Whether a walk is under way on this agent or below it.
bool AgentNode::isInUse() const {
    if (childWalks || componentWalks)
        return true;
    return std::any_of(children.begin(), children.end(), [](const AgentNode* child) { return child->isInUse(); });
}

void AgentNode::onCollision(CollisionData& collision) {
    const Visit visit(*this);
    ComponentWalk walk(*this);
    for (walk.begin(); Component* component = walk.get(); walk.advance())
        callHook("onCollision", [component, &collision] { component->onCollision(collision); });
}

} // namespace tessarin::agent
