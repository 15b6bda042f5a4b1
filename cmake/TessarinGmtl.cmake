# GMTL: the machine's own where there is one, else the few headers that come with this project. A host that has its
# GMTL in an unusual place names it with GMTL_INCLUDE_DIR, or defines tessarin::gmtl before it gets here.
if(NOT TARGET tessarin::gmtl)
  find_path(GMTL_INCLUDE_DIR gmtl/gmtl.h)
  mark_as_advanced(GMTL_INCLUDE_DIR)
  add_library(tessarin::gmtl INTERFACE IMPORTED)
  if(GMTL_INCLUDE_DIR)
    target_include_directories(tessarin::gmtl INTERFACE "${GMTL_INCLUDE_DIR}")
  else()
    target_link_libraries(tessarin::gmtl INTERFACE tessarin::gmtl_fallback)
  endif()
endif()
