#include <agent/Listing.h>

#include <algorithm>
#include <unordered_map>

namespace tessarin::agent {

namespace {

struct Entry {
    AgentNode* agent;
    bool shared;
};

using Table = std::unordered_map<const Listing*, std::vector<Entry>>;

// Never destroyed: hosts' static agents may go after this library's statics.
Table& furtherEntries() {
    static auto* const table = new Table;
    return *table;
}

} // namespace

Listing::~Listing() {
    if (hasMore)
        furtherEntries().erase(this);
}

void Listing::enter(AgentNode* agent, bool shared) {
    if (isEmpty() && !shared) {
        first = agent;
        return;
    }
    if (first == agent) {
        repeated = true;
        return;
    }
    std::vector<Entry>& entries = furtherEntries()[this];
    hasMore = true;
    const auto known = std::find_if(entries.begin(), entries.end(), [=](const Entry& e) { return e.agent == agent; });
    if (known == entries.end()) {
        entries.push_back({agent, shared});
        return;
    }
    repeated = true;
    known->shared = known->shared && shared;
}

void Listing::leave(AgentNode* agent) {
    if (first == agent)
        first = nullptr;
    if (!hasMore) {
        repeated = repeated && first;
        return;
    }
    const auto found = furtherEntries().find(this);
    std::vector<Entry>& entries = found->second;
    entries.erase(std::remove_if(entries.begin(), entries.end(), [=](const Entry& e) { return e.agent == agent; }),
                  entries.end());
    if (entries.empty()) {
        furtherEntries().erase(found);
        hasMore = false;
    }
}

bool Listing::holds(const AgentNode* agent) const {
    if (!hasMore || first == agent)
        return first == agent;
    const std::vector<Entry>& entries = furtherEntries().at(this);
    return std::any_of(entries.begin(), entries.end(), [=](const Entry& e) { return e.agent == agent; });
}

bool Listing::isSharedWith(const AgentNode* agent) const {
    if (!hasMore || first == agent)
        return false;
    const std::vector<Entry>& entries = furtherEntries().at(this);
    return std::any_of(entries.begin(), entries.end(), [=](const Entry& e) { return e.agent == agent && e.shared; });
}

std::vector<AgentNode*> Listing::getAgents() const {
    std::vector<AgentNode*> agents;
    if (first)
        agents.push_back(first);
    if (hasMore)
        for (const Entry& entry : furtherEntries().at(this))
            agents.push_back(entry.agent);
    return agents;
}

} // namespace tessarin::agent
