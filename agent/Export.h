#pragma once

/// @file
/// Marks what the library tessarin_agent shows to its hosts; everything else is hidden.

#if defined(_WIN32)
#    if defined(TESSARIN_AGENT_BUILDS)
#        define TESSARIN_AGENT_EXPORT __declspec(dllexport)
#    else
#        define TESSARIN_AGENT_EXPORT __declspec(dllimport)
#    endif
#else
#    define TESSARIN_AGENT_EXPORT __attribute__((visibility("default")))
#endif
