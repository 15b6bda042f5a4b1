# How this project makes its targets: warnings, visibility, header sets and installation, the same for every layer.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_EXTENSIONS OFF)

if(PROJECT_IS_TOP_LEVEL)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
  endif()
  find_program(TESSARIN_CCACHE ccache)
  mark_as_advanced(TESSARIN_CCACHE)
  if(TESSARIN_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${TESSARIN_CCACHE}")
  endif()
endif()

# Installed siblings find each other beside them, and programs find them in the folder next to theirs.
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

# Compile and link settings that every target of this project takes, tests and programs included.
add_library(tessarin_build_settings INTERFACE)
target_compile_features(tessarin_build_settings INTERFACE cxx_std_17)
target_compile_options(tessarin_build_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast
  # Log lines name source files from the root of the tree.
  "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/="
  $<$<BOOL:${TESSARIN_WARNINGS_AS_ERRORS}>:-Werror>)
target_link_options(tessarin_build_settings INTERFACE -Wl,--as-needed)

# tessarin_add_library(<layer> [INTERFACE] HEADERS <file>... [PRIVATE_HEADERS <file>...] [SOURCES <file>...]
#                      [PUBLIC_LINKS <target>...] [PRIVATE_LINKS <target>...] [BASE_DIR <dir>])
#
# Makes the target tessarin_<layer>, known as tessarin::<layer>: a shared library, or with INTERFACE a set of headers.
# HEADERS are installed under include/tessarin/<folder>; PRIVATE_HEADERS stay in the tree. With BASE_DIR the headers are
# included relative to that folder instead of the root, and installed under include/tessarin/<name of that folder>.
function(tessarin_add_library layer)
  cmake_parse_arguments(PARSE_ARGV 1 arg "INTERFACE" "BASE_DIR"
    "HEADERS;PRIVATE_HEADERS;SOURCES;PUBLIC_LINKS;PRIVATE_LINKS")
  set(target tessarin_${layer})

  if(arg_INTERFACE)
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  else()
    add_library(${target} SHARED ${arg_SOURCES} ${arg_PRIVATE_HEADERS})
    set(scope PUBLIC)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tessarin_build_settings> ${arg_PRIVATE_LINKS})
    string(TOUPPER ${layer} upper)
    set_target_properties(${target} PROPERTIES
      CXX_VISIBILITY_PRESET hidden
      VISIBILITY_INLINES_HIDDEN ON
      DEFINE_SYMBOL TESSARIN_${upper}_BUILDS
      VERSION ${PROJECT_VERSION}
      # Before 1.0 every minor version may change the binary interface.
      SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    # With clang, the sanitizers' runtimes are only resolved in the program.
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
      target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
  endif()
  target_compile_features(${target} ${scope} cxx_std_17)

  set(base "${PROJECT_SOURCE_DIR}")
  set(destination "${CMAKE_INSTALL_INCLUDEDIR}/tessarin")
  if(arg_BASE_DIR)
    set(base "${arg_BASE_DIR}")
    cmake_path(GET base FILENAME folder)
    string(APPEND destination "/${folder}")
  endif()
  target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS "${base}" FILES ${arg_HEADERS})
  target_link_libraries(${target} ${scope} ${arg_PUBLIC_LINKS})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${layer})
  add_library(tessarin::${layer} ALIAS ${target})

  install(TARGETS ${target} EXPORT tessarinTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${destination}")
endfunction()
