# SPDX-License-Identifier: MIT
# The Debian packages: cpack -G DEB in a build folder of the preset "package", which has the
# multiarch library folder and the hardening flags. With SOURCE_DATE_EPOCH in the environment of
# both cmake and cpack, the same sources give the same bytes wherever they are built.
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_VENDOR "zelconfutils")
set(CPACK_PACKAGE_CONTACT "The zelconfutils authors <authors@zelconfutils.invalid>")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own, the first line below
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzelconfutils${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "text configuration files, edited and written back byte for byte
Classes that edit flat and sectioned configuration files and leave every byte
that no edit touched as it was, a lexer and parser shell, section records in
a tree, and a reader of delimited records.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzelconfutils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "text configuration files, edited byte for byte (development files)
Headers, CMake package and pkg-config file for programs that use the
zelconfutils library.")

# What only a package carries: installed with its component, never by a plain `cmake --install`.
find_program(ZELCONFUTILS_GZIP gzip)
if(ZELCONFUTILS_INSTALL AND ZELCONFUTILS_GZIP)
  set(debian ${PROJECT_BINARY_DIR}/debian)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(READ LICENSE license)
  string(REGEX REPLACE "^MIT License\n\nCopyright[^\n]*\n\n" "" license "${license}")
  string(REPLACE "\n\n" "\n.\n" license "${license}")
  string(REGEX REPLACE "\n([^\n])" "\n \\1" license "\n${license}")
  configure_file(cmake/debian/copyright.in ${debian}/copyright @ONLY)
  configure_file(cmake/debian/changelog.in ${debian}/changelog.Debian @ONLY)
  execute_process(COMMAND ${ZELCONFUTILS_GZIP} -9nf ${debian}/changelog.Debian
                  COMMAND_ERROR_IS_FATAL ANY)
  file(WRITE ${debian}/triggers "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debian}/triggers)
  foreach(component RUNTIME DEVELOPMENT)
    string(TOLOWER ${component} name)
    install(FILES ${debian}/copyright ${debian}/changelog.Debian.gz COMPONENT ${name} EXCLUDE_FROM_ALL
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${component}_PACKAGE_NAME})
  endforeach()
endif()
include(CPack)
