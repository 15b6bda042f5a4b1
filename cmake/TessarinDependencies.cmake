# The third-party packages that stand in public headers, as imported targets. The tree and the installed package both
# read this file, so a target of this project means the same in both.

# Says what is missing: in the tree by an error, in a package by the answer of find_package.
macro(tessarin_dependency_missing what)
  if(CMAKE_FIND_PACKAGE_NAME)
    set(${CMAKE_FIND_PACKAGE_NAME}_FOUND FALSE)
    set(${CMAKE_FIND_PACKAGE_NAME}_NOT_FOUND_MESSAGE "${what} is missing.")
    return()
  endif()
  message(FATAL_ERROR "${what} is missing. On Debian, scripts/install_dependencies.sh installs all that is needed.")
endmacro()

find_package(PkgConfig QUIET)
if(NOT PkgConfig_FOUND)
  tessarin_dependency_missing("pkg-config")
endif()

# Makes PkgConfig::<name> from a pkg-config module. The names of the three below carry the project's own, since
# pkg_check_modules leaves variables behind, and a consumer may look the same module up for itself.
macro(tessarin_find_by_pkg_config name module)
  if(NOT TARGET PkgConfig::${name})
    pkg_check_modules(${name} QUIET IMPORTED_TARGET ${module})
    if(NOT ${name}_FOUND)
      tessarin_dependency_missing("The pkg-config module ${module}")
    endif()
  endif()
endmacro()

tessarin_find_by_pkg_config(TESSARIN_SIGCXX sigc++-2.0)
tessarin_find_by_pkg_config(TESSARIN_LOG4CPP log4cpp)
tessarin_find_by_pkg_config(TESSARIN_OSG openscenegraph-osgViewer)
