#pragma once

#include <exception>

namespace tessarin::agent {

/// Logs that a hook of the host's let out an exception; null if it was no std::exception.
void logHookException(const char* hook, const std::exception* exception);

/// Calls a hook of the host's and lets no exception out.
template <class Call>
void callHook(const char* hook, Call&& call) {
    try {
        call();
    } catch (const std::exception& exception) {
        logHookException(hook, &exception);
    } catch (...) {
        logHookException(hook, nullptr);
    }
}

} // namespace tessarin::agent
