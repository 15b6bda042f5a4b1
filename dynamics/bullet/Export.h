#pragma once

/// @file
/// Marks what the shared library of the Bullet world gives out.

#if defined(_WIN32)
#    if defined(TESSARIN_DYNAMICS_BULLET_BUILDS)
#        define TESSARIN_DYNAMICS_BULLET_EXPORT __declspec(dllexport)
#    else
#        define TESSARIN_DYNAMICS_BULLET_EXPORT __declspec(dllimport)
#    endif
#else
#    define TESSARIN_DYNAMICS_BULLET_EXPORT __attribute__((visibility("default")))
#endif
