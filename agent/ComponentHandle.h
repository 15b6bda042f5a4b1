#pragma once

#include <agent/Component.h>

#include <utility>

namespace tessarin::agent {

/// A pointer to a component that becomes null when the component ends, for as long as one operation calls the host: a
/// hook may delete any component, and a new one may come to stand at the old address.
///
/// Only for local variables, which end in the opposite order of their beginning: those that exist are a chain, of which
/// components know nothing, so a component that nobody watches pays nothing for it but a look at the chain's begin when
/// it ends.
class ComponentHandle {
public:
    // The chain names this local only as long as it lives.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic push
#    pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
    explicit ComponentHandle(Component* watched) : component(watched), outer(std::exchange(innermost, this)) {}
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic pop
#endif
    ~ComponentHandle() {
        innermost = outer;
    }
    ComponentHandle(const ComponentHandle&) = delete;
    ComponentHandle& operator=(const ComponentHandle&) = delete;

    /// Null if the component is gone.
    Component* get() const {
        return component;
    }

    /// To be called when a component ends.
    static void expire(const Component* ending) {
        for (ComponentHandle* handle = innermost; handle; handle = handle->outer)
            if (handle->component == ending)
                handle->component = nullptr;
    }

private:
    Component* component;
    ComponentHandle* outer;

    static ComponentHandle* innermost;
};

} // namespace tessarin::agent
