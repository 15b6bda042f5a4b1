#pragma once

/// @file
/// Marks the classes of the dynamics interface that are reached by run-time casts from other libraries: their type
/// information has to be one and the same everywhere, so it is visible although the classes are headers only.

#if defined(_WIN32)
#    define TESSARIN_DYNAMICS_EXPORT
#else
#    define TESSARIN_DYNAMICS_EXPORT __attribute__((visibility("default")))
#endif
