#pragma once

#include <exception>

namespace tessarin::agent {

/// Logs that a hook of the host's let out an exception; null if it was no std::exception.
void logHookException(const char* hook, const std::exception* exception);

/// Counts how often the host may have done anything: what was found out before is to be found out again.
inline unsigned long hostCalls = 0;

/// Lets no exception out of a hook of the host's.
template <class Call>
void guardHook(const char* hook, Call&& call) {
    try {
        call();
    } catch (const std::exception& exception) {
        logHookException(hook, &exception);
    } catch (...) {
        logHookException(hook, nullptr);
    }
}

/// Calls a hook of the host's and lets no exception out.
template <class Call>
void callHook(const char* hook, Call&& call) {
    ++hostCalls;
    guardHook(hook, call);
    ++hostCalls;
}

} // namespace tessarin::agent
