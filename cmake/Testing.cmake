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

# A program of the tests. It is made of the library's objects, so that it reaches what the library
# does not export, and of what tests share, compiled once.
function(zelconfutils_test_program name level)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE zelconfutils_objects zelconfutils_test_support)
  zelconfutils_test_options(${name} ${level})
  if(MINGW)
    # One runtime in one module: FailingNew replaces the allocations of all of it.
    target_link_options(${name} PRIVATE -static)
  endif()
  if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 takes the room of a std::string's short form for all of it, once it sees the whole program.
    target_link_options(${name} PRIVATE -Wno-stringop-overflow)
  endif()
endfunction()

# To optimise the tests takes longer than they run; the fuzz programs run longer, and take a little of it.
# The library's objects are what they are.
function(zelconfutils_test_options target level)
  zelconfutils_warnings(${target})
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE ${level})
  endif()
  # Each file has fixtures and helpers of its own, by the names that suit it.
  set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
endfunction()

if(zelconfutils_tests OR ZELCONFUTILS_BUILD_FUZZERS)
  if(WIN32)
    set(system Windows)
  else()
    set(system Posix)
  endif()
  add_library(zelconfutils_test_support OBJECT tests/FailingNew.cpp tests/TestSystem${system}.cpp)
  target_link_libraries(zelconfutils_test_support PRIVATE zelconfutils_objects)
  zelconfutils_test_options(zelconfutils_test_support -O0)
endif()
