#include <agent/AgentNode.h>

#include <agent/AgentNodeLookUps.h>
#include <agent/AgentNodeOsgUserData.h>
#include <agent/AgentNodeWalk.h>
#include <agent/ListSearch.h>
#include <agent/SceneGraph.h>

#include <algorithm>
#include <cassert>
#include <iterator>
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
    ++childCount;
    const bool isFirstEntry = child->listing.isEmpty();
    child->listing.enter(this, false);
    if (isFirstEntry)
        child->listEntry = std::prev(children.end());
    if (child->markedForRemoval)
        sweepIsDue = true;
    for (Visit* visit = visits; visit; visit = visit->outer)
        if (visit->kind == Visit::WALK_OVER_CHILDREN)
            static_cast<ChildWalk*>(visit)->append();
    LookUps::appended(*this, child);
}

void AgentNode::eraseChild(std::list<AgentNode*>::iterator erased) {
    for (Visit* visit = visits; visit; visit = visit->outer)
        if (visit->kind == Visit::WALK_OVER_CHILDREN)
            static_cast<ChildWalk*>(visit)->leave(erased);
    LookUps::leaving(*this, *erased);
    children.erase(erased);
    --childCount;
    knowsEntries = knowsEntries || children.empty();
}

/// Takes every entry of the child out of the list and counts them.
int AgentNode::unlistChild(AgentNode* child) {
    const auto found = findChild(child);
    if (found == children.end())
        return 0;
    eraseChild(found);
    int count = 1;
    if (child->listing.isRepeated()) {
        for (auto next = children.begin(); next != children.end();) {
            const auto here = next++;
            if (*here == child) {
                eraseChild(here);
                ++count;
            }
        }
    }
    child->listing.leave(this);
    return count;
}

/// The child's first entry, or the list's end.
std::list<AgentNode*>::iterator AgentNode::findChild(AgentNode* child) {
    checkEntries();
    if (!child->listing.holds(this))
        return children.end();
    const bool isKnown = knowsEntries && child->listing.isOnlyIn(this) && *child->listEntry == child;
    return isKnown ? child->listEntry : findFromBothEnds(children, child);
}

/// Finds out what the host has done to the list itself. It may reorder it; then entries may have moved, and children
/// are searched for. Pointers that came or went would dangle sooner or later.
void AgentNode::checkEntries() {
    const bool areOurs =
        children.size() == childCount &&
        (children.empty() || (children.front()->listing.holds(this) && children.back()->listing.holds(this)));
    assert(areOurs && "AgentNode::getChildren: entries come and go by addChild and removeChild alone.");
    if (!areOurs)
        adoptEntries();
    if (knowsEntries && !children.empty())
        knowsEntries = isEntryOf(children.front(), children.begin()) && isEntryOf(children.back(), --children.end());
}

bool AgentNode::isEntryOf(const AgentNode* child, std::list<AgentNode*>::iterator place) const {
    return child->listEntry == place || !child->listing.isOnlyIn(this);
}

/// Makes what the children know of the list agree with it.
void AgentNode::adoptEntries() {
    LookUps::forget(*this);
    const std::unordered_set<const AgentNode*> listed(children.begin(), children.end());
    for (AgentNode* const agent : allAgents)
        if (agent->listing.holds(this) && listed.count(agent) == 0)
            agent->listing.leave(this);
    for (AgentNode* const child : children)
        if (!child->listing.holds(this))
            child->listing.enter(this, false);
    childCount = static_cast<std::uint32_t>(children.size());
    knowsEntries = false;
    sweepIsDue = true;
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
    for (Visit* visit = visits; visit; visit = visit->outer)
        if (visit->kind == Visit::WALK_OVER_CHILDREN)
            static_cast<ChildWalk*>(visit)->noteDeparture(*child);
    const int entries = std::max(unlistChild(child), 1);
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

void AgentNode::markForRemoval() {
    markedForRemoval = true;
    if (AgentNode* const holder = listing.getFirstAgent())
        holder->sweepIsDue = true;
    if (listing.hasMoreAgents())
        for (AgentNode* const holder : listing.getAgents())
            holder->sweepIsDue = true;
}

void AgentNode::visitChildren(sigc::slot<void, AgentNode*> slot) {
    checkEntries();
    for (ChildWalk walk(*this); AgentNode* child = walk.get(); walk.advance())
        slot(child);
}

void AgentNode::visitComponents(sigc::slot<void, Component*> slot) {
    for (ComponentWalk walk(*this); Component* component = walk.get(); walk.advance())
        slot(component);
}

} // namespace tessarin::agent
