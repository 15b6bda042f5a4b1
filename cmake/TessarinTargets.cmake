# How this project makes its targets: warnings, visibility, header sets and installation, the same for every layer.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# Compile and link settings that every target of this project takes, tests and programs included.
add_library(tessarin_build_settings INTERFACE)
target_compile_features(tessarin_build_settings INTERFACE cxx_std_17)
target_compile_options(tessarin_build_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast
  $<$<BOOL:${TESSARIN_WARNINGS_AS_ERRORS}>:-Werror>)

# tessarin_add_library(<layer> [INTERFACE] HEADERS <file>... [PRIVATE_HEADERS <file>...] [SOURCES <file>...]
#                      [PUBLIC_LINKS <target>...] [PRIVATE_LINKS <target>...])
#
# Makes the target tessarin_<layer>, known as tessarin::<layer>: a shared library, or with INTERFACE a set of headers.
# HEADERS are installed under include/tessarin/<folder>; PRIVATE_HEADERS stay in the tree.
function(tessarin_add_library layer)
  cmake_parse_arguments(PARSE_ARGV 1 arg "INTERFACE" "" "HEADERS;PRIVATE_HEADERS;SOURCES;PUBLIC_LINKS;PRIVATE_LINKS")
  set(target tessarin_${layer})

  if(arg_INTERFACE)
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
    target_compile_features(${target} INTERFACE cxx_std_17)
  else()
    add_library(${target} SHARED ${arg_SOURCES} ${arg_PRIVATE_HEADERS})
    set(scope PUBLIC)
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:tessarin_build_settings> ${arg_PRIVATE_LINKS})
    string(TOUPPER ${layer} upper)
    set_target_properties(${target} PROPERTIES
      CXX_VISIBILITY_PRESET hidden
      VISIBILITY_INLINES_HIDDEN ON
      DEFINE_SYMBOL TESSARIN_${upper}_BUILDS
      VERSION ${PROJECT_VERSION}
      SOVERSION ${PROJECT_VERSION_MAJOR}
      INSTALL_RPATH "$ORIGIN")
    # The sanitizers' runtimes are only resolved in the program.
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
      target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
  endif()

  target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${arg_HEADERS})
  target_link_libraries(${target} ${scope} ${arg_PUBLIC_LINKS})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${layer})
  add_library(tessarin::${layer} ALIAS ${target})

  install(TARGETS ${target} EXPORT tessarinTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tessarin")
endfunction()
