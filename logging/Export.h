#pragma once

/// @file
/// Marks what the library tessarin_logging shows to others.

#if defined(_WIN32)
#    if defined(TESSARIN_LOGGING_BUILDS)
#        define TESSARIN_LOGGING_EXPORT __declspec(dllexport)
#    else
#        define TESSARIN_LOGGING_EXPORT __declspec(dllimport)
#    endif
#else
#    define TESSARIN_LOGGING_EXPORT __attribute__((visibility("default")))
#endif
