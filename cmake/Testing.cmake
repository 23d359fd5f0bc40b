# SPDX-License-Identifier: MIT
# Whether there are tests (zelconfutils_tests), and where their GoogleTest comes from. Who wants the
# library alone needs no GoogleTest: the tests stay out then, unless they are required.
option(ZELCONFUTILS_GTEST_FROM_SOURCE
       "Build GoogleTest from the sources of the package googletest (another standard library)" OFF)
if(DEFINED BUILD_TESTING AND NOT BUILD_TESTING)
  set(zelconfutils_tests OFF)
else()
  set(zelconfutils_tests ${ZELCONFUTILS_BUILD_TESTS})
  if(zelconfutils_tests OR ZELCONFUTILS_BUILD_EXAMPLES)
    enable_testing()
  endif()
endif()

if(zelconfutils_tests)
  if(NOT ZELCONFUTILS_GTEST_FROM_SOURCE)
    find_package(GTest QUIET)
  elseif(EXISTS /usr/src/googletest/CMakeLists.txt)
    set(GTest_FOUND TRUE)
  endif()
  if(NOT GTest_FOUND)
    set(zelconfutils_tests OFF)
    message(STATUS "No GoogleTest (Debian: libgtest-dev, googletest): the tests are left out")
  endif()
endif()
if(ZELCONFUTILS_REQUIRE_TESTS AND NOT zelconfutils_tests)
  message(FATAL_ERROR "The tests are required, but they are switched off or GoogleTest is missing")
endif()
