#include <agent/AgentNode.h>

#include <agent/AgentNodeOsgUserData.h>
#include <agent/AgentNodeWalk.h>
#include <agent/ListSearch.h>
#include <agent/SceneGraph.h>

#include <algorithm>
#include <cassert>
#include <unordered_set>
#include <vector>

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
    // Where every agent stands in one list, this is a plain climb.
    while (node && node != this && !node->listing.hasMoreAgents())
        node = node->listing.getFirstAgent();
    if (!node || node == this)
        return node == this;

    std::unordered_set<const AgentNode*> seen{node};
    std::vector<const AgentNode*> open{node};
    while (!open.empty()) {
        const AgentNode* const below = open.back();
        open.pop_back();
        if (below == this)
            return true;
        for (const AgentNode* const holder : below->listing.getAgents())
            if (seen.insert(holder).second)
                open.push_back(holder);
    }
    return false;
}

void AgentNode::listChild(AgentNode* child) {
    children.push_back(child);
    child->listing.enter(this, false);
    if (childWalks)
        ChildWalk::appended(*this);
}

void AgentNode::eraseChild(std::list<AgentNode*>::iterator entry, bool forGood) {
    if (childWalks)
        ChildWalk::leaving(*this, entry, forGood);
    children.erase(entry);
}

/// Takes every entry of the child out of the list and counts them.
/// @param forGood the child is about to be deleted.
int AgentNode::unlistChild(AgentNode* child, bool forGood) {
    const auto found = findFromBothEnds(children, child);
    if (found == children.end())
        return 0;
    eraseChild(found, forGood);
    int count = 1;
    if (child->listing.isRepeated()) {
        for (auto entry = children.begin(); entry != children.end();) {
            const auto here = entry++;
            if (*here == child) {
                eraseChild(here, forGood);
                ++count;
            }
        }
    }
    child->listing.leave(this);
    return count;
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
    const int entries = std::max(unlistChild(child, false), 1);
    for (int i = 0; i < entries && osgTransform && child->osgTransform; ++i)
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
    if (osgTransform == transform && !ownsTransform)
        return; // a copy doesn't take the transform over from its source
    if (osgTransform != transform) {
        osgTransform = transform;
        ownsTransform = true;
        forgetPoses();
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
