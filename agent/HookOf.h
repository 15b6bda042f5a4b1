#pragma once

#include <agent/GeometryComponent.h>
#include <agent/HookGuard.h>
#include <agent/JointComponent.h>
#include <agent/KeepsLookUps.h>
#include <agent/RigidBodyComponent.h>

#include <typeinfo>

namespace tessarin::agent {

/// Whether nothing that is asked of the component while it is made and attached changes what look-ups find: it doesn't
/// reach the host, or the host has promised so.
inline bool keepsLookUps(const Component& component) {
    // A class that a host has derived from one of these is the host's.
    const std::type_info& type = typeid(component);
    return type == typeid(GeometryComponent) || type == typeid(RigidBodyComponent) || type == typeid(JointComponent) ||
           dynamic_cast<const KeepsLookUps*>(&component);
}

/// Calls a hook of something that may be the library's own or the host's.
template <class Call>
void callHookOf(const Component& component, const char* hook, Call&& call) {
    if (keepsLookUps(component))
        guardHook(hook, call);
    else
        callHook(hook, call);
}

} // namespace tessarin::agent
