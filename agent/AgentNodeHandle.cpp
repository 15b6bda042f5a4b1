#include <agent/AgentNodeHandle.h>

#include <agent/AgentNode.h>

namespace tessarin::agent {

void AgentNodeHandle::watch(AgentNode* node) {
    agent = node;
    if (!node)
        return;
    next = node->watchers;
    link = &node->watchers;
    if (next)
        next->link = &next;
    node->watchers = this;
}

void AgentNodeHandle::unwatch() {
    if (!agent)
        return;
    *link = next;
    if (next)
        next->link = link;
    agent = nullptr;
    next = nullptr;
    link = nullptr;
}

} // namespace tessarin::agent
