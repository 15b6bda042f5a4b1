#pragma once

#include <cstdint>

namespace tessarin::agent {
class AgentNode;
}

namespace tessarin::viewer {

/// A number for the state of a branch: over the names and the local matrices of its agents, to the last bit, and how
/// they hang in the tree. Equal states have equal digests, others hardly ever (FNV-1a with 64 bits, which keeps nobody
/// from forging one).
std::uint64_t digestOf(agent::AgentNode& root);

} // namespace tessarin::viewer
