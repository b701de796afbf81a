# SPDX-License-Identifier: MIT
# What `cmake --install` puts where: the library in the kinds that are built, its header, its
# description for CMake and pkg-config, and the manual pages. Nothing names the prefix, so the tree
# can be moved.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orn_min_render)
include(CMakePackageConfigHelpers)
write_basic_package_version_file(orn_min_renderConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orn_min_renderConfigVersion.cmake
  DESTINATION ${package_dir})
install(FILES cmake/orn_min_renderConfig.cmake DESTINATION ${package_dir})
foreach(library ${libraries})
  if(library MATCHES "static$")
    set(kind static)
  else()
    set(kind shared)
  endif()
  install(TARGETS ${library} EXPORT ${library} PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT ${library} NAMESPACE orn_min_render:: FILE orn_min_render-${kind}.cmake
    DESTINATION ${package_dir})
endforeach()

set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH to_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX}) # ends in a slash
file(RELATIVE_PATH libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/orn_min_render.pc.in orn_min_render.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orn_min_render.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.[1-9])
if(NOT ORN_MIN_RENDER_TOOLS)
  list(FILTER pages EXCLUDE REGEX "1$")
endif()
foreach(page ${pages})
  string(REGEX MATCH "[1-9]$" section ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endforeach()
