# SPDX-License-Identifier: MIT
# Nothing that is installed names the prefix: the tree may be moved as a whole.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/zelconfutils)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/zelconfutils)

install(TARGETS zelconfutils EXPORT zelconfutils
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${headers})  # both spellings, as below
install(DIRECTORY include/ DESTINATION ${headers} COMPONENT development
        FILES_MATCHING PATTERN "*.h")
# Of a component that no Debian package has: these have a file of their own for it.
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/zelconfutils COMPONENT license)

if(MINGW AND BUILD_SHARED_LIBS)
  install(FILES ${PROJECT_BINARY_DIR}/src/zelconfutils.def
          DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()

# The library needs no other package, so the exported target is the whole configuration file.
install(EXPORT zelconfutils NAMESPACE zelconfutils:: FILE zelconfutils-config.cmake
        DESTINATION ${package} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zelconfutils-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zelconfutils-config-version.cmake
        DESTINATION ${package} COMPONENT development)

file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH pc_headers ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
set(pc_static "")
if(NOT BUILD_SHARED_LIBS)
  set(pc_static " -DZELCONFUTILS_STATIC")
endif()
configure_file(cmake/zelconfutils.pc.in ${PROJECT_BINARY_DIR}/zelconfutils.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zelconfutils.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
