#pragma once

/// @file
/// Marks what the library tessarin_sceneutils shows to others.

#if defined(_WIN32)
#    if defined(TESSARIN_SCENEUTILS_BUILDS)
#        define TESSARIN_SCENEUTILS_EXPORT __declspec(dllexport)
#    else
#        define TESSARIN_SCENEUTILS_EXPORT __declspec(dllimport)
#    endif
#else
#    define TESSARIN_SCENEUTILS_EXPORT __attribute__((visibility("default")))
#endif
