# GMTL: the machine's own where there is one, also in a folder with its version like include/gmtl-0.7.1, else the few
# headers that come with this project. A host that has its GMTL in an unusual place names the folder that holds
# gmtl/gmtl.h with GMTL_INCLUDE_DIR, or defines tessarin::gmtl before it gets here.
if(NOT TARGET tessarin::gmtl)
  set(_tessarin_gmtl_folders "")
  string(REPLACE ":" ";" _tessarin_gmtl_prefixes "$ENV{CMAKE_PREFIX_PATH}")
  foreach(_tessarin_gmtl_prefix IN LISTS CMAKE_PREFIX_PATH _tessarin_gmtl_prefixes CMAKE_SYSTEM_PREFIX_PATH)
    file(GLOB _tessarin_gmtl_found "${_tessarin_gmtl_prefix}/include/gmtl-*")
    list(APPEND _tessarin_gmtl_folders ${_tessarin_gmtl_found})
  endforeach()
  # The newest first.
  list(SORT _tessarin_gmtl_folders COMPARE NATURAL ORDER DESCENDING)
  find_path(GMTL_INCLUDE_DIR gmtl/gmtl.h PATHS ${_tessarin_gmtl_folders}
    DOC "The folder that holds gmtl/gmtl.h; without it the project's own headers are used")
  mark_as_advanced(GMTL_INCLUDE_DIR)
  add_library(tessarin::gmtl INTERFACE IMPORTED)
  if(GMTL_INCLUDE_DIR)
    target_include_directories(tessarin::gmtl INTERFACE "${GMTL_INCLUDE_DIR}")
    set(_tessarin_gmtl_message "GMTL: ${GMTL_INCLUDE_DIR}")
    find_file(_tessarin_gmtl_header gmtl/gmtl.h PATHS ${GMTL_INCLUDE_DIR} NO_DEFAULT_PATH NO_CACHE)
    if(NOT _tessarin_gmtl_header)
      message(FATAL_ERROR "There is no gmtl/gmtl.h in ${GMTL_INCLUDE_DIR}, which GMTL_INCLUDE_DIR names. "
        "Name the folder that holds gmtl/gmtl.h, such as /usr/local/include/gmtl-0.7.1.")
    endif()
    unset(_tessarin_gmtl_header)
  else()
    target_link_libraries(tessarin::gmtl INTERFACE tessarin::gmtl_fallback)
    set(_tessarin_gmtl_message "GMTL was not found, so the headers that come with tessarin_agent stand in for it. To \
use your own, name the folder that holds gmtl/gmtl.h: -DGMTL_INCLUDE_DIR=<folder>")
  endif()
  if(NOT tessarin_FIND_QUIETLY)
    message(STATUS "${_tessarin_gmtl_message}")
  endif()
  unset(_tessarin_gmtl_message)
  unset(_tessarin_gmtl_folders)
  unset(_tessarin_gmtl_prefixes)
  unset(_tessarin_gmtl_found)
endif()
