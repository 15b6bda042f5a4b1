#include <agent/AgentNode.h>

#include <agent/AgentNodeOsgUserData.h>
#include <agent/AgentNodeWalk.h>
#include <agent/SceneGraph.h>

#include <cassert>

namespace tessarin::agent {

AgentNode* AgentNode::addChild(const std::string& name) {
    auto* const child = new AgentNode(name);
    addChild(child);
    return child;
}

void AgentNode::addChild(AgentNode* child) {
    assert(child && "AgentNode::addChild takes no null child.");
    if (!child)
        return;
    const bool cycle = child == this || (!child->children.empty() && child->isAbove(this));
    assert(!cycle && "AgentNode::addChild: an agent cannot be its own descendant.");
    if (cycle)
        return;
    child->parent = this;
    listChild(child);
    if (osgTransform && child->osgTransform)
        osgTransform->addChild(child->osgTransform);
}

/// True if this agent is the node or above it, going by the lists that hold the node.
bool AgentNode::isAbove(const AgentNode* node) const {
    if (node == this)
        return true;
    for (const AgentNode* const holder : node->listing.getAgents())
        if (isAbove(holder))
            return true;
    return false;
}

void AgentNode::listChild(AgentNode* child) {
    children.push_back(child);
    child->listing.enter(this, false);
    if (childWalks)
        ChildWalk::appended(*this);
}

void AgentNode::eraseChild(std::list<AgentNode*>::iterator entry) {
    if (childWalks)
        ChildWalk::leaving(*this, entry);
    children.erase(entry);
}

/// The first entry of the child, searched from both ends at once: children usually leave in order or in reverse.
static std::list<AgentNode*>::iterator findEntry(std::list<AgentNode*>& list, const AgentNode* child) {
    auto front = list.begin();
    for (auto back = list.end(); front != back; ++front) {
        if (*front == child)
            return front;
        if (--back == front)
            break;
        if (*back == child)
            return back;
    }
    return list.end();
}

/// Takes every entry of the child out of the list; false if there is none.
bool AgentNode::unlistChild(AgentNode* child) {
    const auto found = findEntry(children, child);
    if (found == children.end())
        return false;
    eraseChild(found);
    if (child->listing.isRepeated()) {
        for (auto entry = children.begin(); entry != children.end();) {
            const auto here = entry++;
            if (*here == child)
                eraseChild(here);
        }
    }
    child->listing.leave(this);
    return true;
}

AgentNode* AgentNode::getChild(const std::string& name) {
    for (AgentNode* const child : children)
        if (child->getName() == name)
            return child;
    return nullptr;
}

AgentNode* AgentNode::getOrAddChild(const std::string& name) {
    AgentNode* const child = getChild(name);
    return child ? child : addChild(name);
}

void AgentNode::removeChild(AgentNode* child) {
    assert(child && "AgentNode::removeChild takes no null child.");
    if (!child)
        return;
    unlistChild(child);
    if (osgTransform && child->osgTransform)
        removeFromGroup(*osgTransform, *child->osgTransform);
}

AgentNode* AgentNode::getParent() {
    return parent;
}

AgentNode* AgentNode::getAgentNode(const std::string& name) {
    for (AgentNode* const agent : allAgents)
        if (agent->getName() == name)
            return agent;
    return nullptr;
}

AgentNode* AgentNode::getAgentNode(osg::ref_ptr<osg::Transform> transform) {
    if (!transform)
        return nullptr;
    const auto* const link = dynamic_cast<AgentNodeOsgUserData*>(transform->getUserData());
    return link ? link->getAgent() : nullptr;
}

osg::ref_ptr<osg::Transform> AgentNode::getOsgTransform() {
    return osgTransform;
}

void AgentNode::setOsgTransform(osg::ref_ptr<osg::Transform> transform) {
    if (osgTransform != transform) {
        osgTransform = transform;
        ownsTransform = true;
    }
    if (osgTransform)
        osgTransform->setUserData(new AgentNodeOsgUserData(this));
}

bool AgentNode::hasAgent(const std::string& name, int depth) const {
    if (depth < 1)
        return false;
    for (const AgentNode* const child : children)
        if (child->getName() == name || child->hasAgent(name, depth - 1))
            return true;
    return false;
}

void AgentNode::visitChildren(sigc::slot<void, AgentNode*> slot) {
    const Visit visit(*this);
    ChildWalk walk(*this);
    for (walk.begin(); AgentNode* child = walk.get(); walk.advance())
        slot(child);
}

void AgentNode::visitComponents(sigc::slot<void, Component*> slot) {
    const Visit visit(*this);
    ComponentWalk walk(*this);
    for (walk.begin(); Component* component = walk.get(); walk.advance())
        slot(component);
}

} // namespace tessarin::agent
