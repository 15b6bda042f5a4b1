# The package that find_package(tessarin) finds: the exported targets, the look-ups that they need, and a version.

include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/tessarin")

configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/tessarinConfig.cmake.in" "${PROJECT_BINARY_DIR}/tessarinConfig.cmake"
  INSTALL_DESTINATION "${package_folder}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tessarinConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)

install(EXPORT tessarinTargets NAMESPACE tessarin:: DESTINATION "${package_folder}")
install(FILES
  "${PROJECT_BINARY_DIR}/tessarinConfig.cmake"
  "${PROJECT_BINARY_DIR}/tessarinConfigVersion.cmake"
  "${CMAKE_CURRENT_LIST_DIR}/TessarinDependencies.cmake"
  "${CMAKE_CURRENT_LIST_DIR}/TessarinGmtl.cmake"
  DESTINATION "${package_folder}")
