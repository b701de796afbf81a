# SPDX-License-Identifier: MIT
# For find_package(orn_min_render): orn_min_render::orn_min_render is the shared library, or the
# static one where that is the only component asked for, or the only one installed.
# orn_min_render::orn_min_render_static is the static one. Neither depends on another package.
set(orn_min_render_static_FOUND TRUE)
set(_orn_kinds "static")
if(EXISTS "${CMAKE_CURRENT_LIST_DIR}/orn_min_render-shared.cmake")
  set(orn_min_render_shared_FOUND TRUE)
  set(_orn_kinds "static and shared")
endif()

foreach(_orn_kind IN LISTS orn_min_render_FIND_COMPONENTS)
  if(orn_min_render_FIND_REQUIRED_${_orn_kind} AND NOT orn_min_render_${_orn_kind}_FOUND)
    set(orn_min_render_FOUND FALSE)
    set(orn_min_render_NOT_FOUND_MESSAGE
      "The library orn_min_render is installed as ${_orn_kinds}, not as \"${_orn_kind}\".")
    return()
  endif()
endforeach()

include("${CMAKE_CURRENT_LIST_DIR}/orn_min_render-static.cmake")
if(orn_min_render_shared_FOUND AND NOT orn_min_render_FIND_COMPONENTS STREQUAL "static")
  include("${CMAKE_CURRENT_LIST_DIR}/orn_min_render-shared.cmake")
elseif(NOT TARGET orn_min_render::orn_min_render)
  add_library(orn_min_render::orn_min_render INTERFACE IMPORTED)
  set_target_properties(orn_min_render::orn_min_render PROPERTIES
    INTERFACE_LINK_LIBRARIES orn_min_render::orn_min_render_static)
endif()
