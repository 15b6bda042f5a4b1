# The third-party packages, as imported targets. The installed package includes this file too, so that a
# consumer meets the same targets.

include(CMakeFindDependencyMacro)
find_dependency(PkgConfig)

# pkg_check_modules marks its directories as system ones only when the target is imported, which IMPORTED_TARGET does.
macro(tessarin_find_by_pkg_config name module)
  if(NOT TARGET PkgConfig::${name})
    pkg_check_modules(${name} REQUIRED QUIET IMPORTED_TARGET ${module})
  endif()
endmacro()

tessarin_find_by_pkg_config(SIGCXX sigc++-2.0)
tessarin_find_by_pkg_config(LOG4CPP log4cpp)
tessarin_find_by_pkg_config(OSG openscenegraph)
