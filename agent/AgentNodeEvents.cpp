#include <agent/AgentNode.h>

#include <agent/AgentNodeLookUps.h>
#include <agent/AgentNodeWalk.h>
#include <agent/Component.h>
#include <agent/ComponentHandle.h>
#include <agent/HookOf.h>
#include <agent/ListSearch.h>
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
    callHookOf(*component, "getSupportedEvents", [&] { choosy = component->getSupportedEvents(events); });
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
    callHookOf(*component, "attached", [component] { component->attached(); });
    return component;
}

void AgentNode::tellAgentNode(Component* component, AgentNode* node) {
    callHookOf(*component, "setAgentNode", [&] { component->setAgentNode(node); });
}

osg::Node* AgentNode::osgNodeOf(Component* component) {
    osg::Node* node = nullptr;
    callHookOf(*component, "getOsgNode", [&] { node = component->getOsgNode(); });
    return node;
}

void AgentNode::listComponent(Component* component) {
    // The connections that a component on no agent still has are disconnected, or its source's if it is a copy.
    if (component->listing.isEmpty())
        component->connections.clear();
    components.push_back(component);
    component->listing.enter(this, false);
    for (Visit* visit = visits; visit; visit = visit->outer)
        if (visit->kind == Visit::WALK_OVER_COMPONENTS)
            static_cast<ComponentWalk*>(visit)->append();
    LookUps::appended(*this, component);
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
        for (Visit* visit = visits; visit; visit = visit->outer)
            if (visit->kind == Visit::WALK_OVER_COMPONENTS)
                static_cast<ComponentWalk*>(visit)->leave(entry);
        LookUps::leaving(*this, *entry);
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
    return handle.get() && handle.get()->listing.holds(this);
}

void AgentNode::sendEvent(AgentEvent::_AgentEventEnum event) {
    assert(isEvent(event) && "AgentNode::sendEvent takes the sixteen agent events and no others.");
    if (!isEvent(event))
        return;
    checkEntries();
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
    if (!listens(event)) {
        // As long as nobody is called nothing can change, and no visit has to be known.
        while (entry != children.end() && (*entry)->isSilentLeaf(event))
            ++entry;
        if (entry == children.end()) {
            if (sweepIsDue)
                removeMarkedChildren();
            return;
        }
    }
    dispatchFrom(entry, event);
}

/// The whole dispatch where the agent listens; else that to the children from the entry on.
void AgentNode::dispatchFrom(std::list<AgentNode*>::iterator entry, AgentEvent::_AgentEventEnum event) {
    if (listens(event)) {
        const Visit visit(*this);
        eventSignals[event].emit();
        if (visit.isOver())
            return;
        entry = children.begin();
    }
    if (entry != children.end()) {
        ChildWalk walk(*this, entry);
        for (; AgentNode* child = walk.get(); walk.advance()) {
            prefetchNext(walk.current);
            if (!child->isSilentLeaf(event))
                child->dispatchEvent(event);
        }
        if (walk.isOver())
            return;
    }
    if (sweepIsDue)
        removeMarkedChildren();
}

/// The children that a sweep deletes now. One that an event, a slot or a document is passing through stays marked for a
/// later sweep.
std::vector<AgentNode*> AgentNode::markedChildrenToDelete() const {
    std::vector<AgentNode*> leaving;
    for (AgentNode* const child : children)
        if (child->markedForRemoval && owns(child) && !child->isVisited())
            leaving.push_back(child);
    return leaving;
}

void AgentNode::removeMarkedChildren() {
    const Visit visit(*this);
    // What goes may mark others, also those before it.
    for (auto leaving = markedChildrenToDelete(); !leaving.empty(); leaving = markedChildrenToDelete()) {
        constexpr std::size_t many = 8; // each takes its own transform out of the scene, but many go faster at once
        if (leaving.size() > many)
            detachTransforms(leaving);
        else
            leaving.clear();
        for (ChildWalk walk(*this); AgentNode* child = walk.get(); walk.advance()) {
            if (!child->markedForRemoval || !owns(child))
                continue;
            if (!child->isVisited()) {
                unlistChild(child);
                deleteChild(child);
            } else if (std::find(leaving.begin(), leaving.end(), child) != leaving.end()) {
                hangInOrder(child); // one that went has brought somebody who is visited below it
            }
        }
        if (visit.isOver())
            return;
    }
    sweepIsDue = std::any_of(children.begin(), children.end(),
                             [this](const AgentNode* child) { return child->markedForRemoval && owns(child); });
}

void AgentNode::detachTransforms(const std::vector<AgentNode*>& leaving) {
    std::vector<osg::Node*> transforms;
    for (AgentNode* const child : leaving)
        if (child->osgTransform)
            transforms.push_back(child->osgTransform.get());
    if (osgTransform)
        removeManyFromGroup(*osgTransform, transforms);
}

/// Puts a child's transform back under this agent's, behind that of the sibling before it.
void AgentNode::hangInOrder(AgentNode* child) {
    if (!osgTransform || !child->osgTransform)
        return;
    unsigned index = 0;
    for (auto sibling = findChild(child); sibling != children.begin();) {
        const unsigned before = osgTransform->getChildIndex((*--sibling)->osgTransform.get());
        if (before < osgTransform->getNumChildren()) {
            index = before + 1;
            break;
        }
    }
    osgTransform->insertChild(index, child->osgTransform);
}

/// Whether something is under way on this agent or on one that would end with it.
bool AgentNode::isVisited() const {
    return visits || std::any_of(children.begin(), children.end(),
                                 [this](const AgentNode* child) { return owns(child) && child->isVisited(); });
}

void AgentNode::onCollision(CollisionData& collision) {
    for (ComponentWalk walk(*this); Component* component = walk.get(); walk.advance())
        callHook("onCollision", [component, &collision] { component->onCollision(collision); });
}

} // namespace tessarin::agent
