#pragma once

#include <agent/Export.h>

namespace tessarin::agent {

/// A further base of a host's component class, and its promise: while such a component is made, given its fields,
/// attached and initialised, it neither renames nodes of loaded models, nor changes which nodes hang below which in
/// them, nor reorders the lists of agents.
///
/// A document that is being applied looks up agents, components and the nodes of geometry by name, and remembers what
/// it knows of names as long as nobody else has had a say. After a component of a class without this promise it
/// searches the model anew for the next geometry. That is right whatever hooks do, and dear only where thousands of
/// agents have both geometry and such a component.
/// @code
/// class Lamp : public Component, public KeepsLookUps { ... };
/// @endcode
class TESSARIN_AGENT_EXPORT KeepsLookUps {
protected:
    KeepsLookUps() = default;
    KeepsLookUps(const KeepsLookUps&) = default;
    KeepsLookUps& operator=(const KeepsLookUps&) = default;
    ~KeepsLookUps() = default;
};

} // namespace tessarin::agent
