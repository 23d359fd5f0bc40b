# SPDX-License-Identifier: MIT
# What users and the rules of the house count on, tested with the compiler and flags of this build.
if(CMAKE_HOST_WIN32 OR NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
set(consumer ${CMAKE_CURRENT_LIST_DIR})
separate_arguments(flags UNIX_COMMAND "${CMAKE_CXX_FLAGS}")
file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/*.h)

foreach(standard 17 20)
  add_test(NAME headers_compile_alone_c++${standard}
           COMMAND ${CMAKE_CXX_COMPILER} ${flags} -std=c++${standard} -fsyntax-only -Wall -Wextra
                   -Wpedantic -Wshadow -Wconversion -Werror -x c++ ${headers})
endforeach()

set(installed installed ${PROJECT_BINARY_DIR})
if(MINGW)
  set(installed installed_dll ${PROJECT_BINARY_DIR} ${CMAKE_TOOLCHAIN_FILE}
                ${CMAKE_CROSSCOMPILING_EMULATOR})
endif()
add_test(NAME installed_library COMMAND bash ${consumer}/check.sh ${installed})
set_tests_properties(installed_library PROPERTIES TIMEOUT 120
  ENVIRONMENT "CXX=${CMAKE_CXX_COMPILER};CXXFLAGS=${CMAKE_CXX_FLAGS}")

# A program may have names of the library's inside for its own; what the library defines keeps out.
add_library(zelconfutils_archive STATIC $<TARGET_OBJECTS:zelconfutils_objects>)
set_target_properties(zelconfutils_archive PROPERTIES LINKER_LANGUAGE CXX)
add_executable(foreign_names ${PROJECT_SOURCE_DIR}/examples/check_config.cpp
                             ${consumer}/foreign_names.cpp)
target_compile_features(foreign_names PRIVATE cxx_std_17)
target_compile_definitions(foreign_names PRIVATE ZELCONFUTILS_STATIC)
target_include_directories(foreign_names PRIVATE $<TARGET_PROPERTY:zelconfutils,INTERFACE_INCLUDE_DIRECTORIES>)
target_link_libraries(foreign_names PRIVATE zelconfutils_archive $<$<BOOL:${MINGW}>:-static>)
add_test(NAME foreign_names COMMAND foreign_names ${PROJECT_SOURCE_DIR}/examples/data/tidy.conf)
if(NOT WIN32 AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  add_test(NAME defined_names COMMAND bash ${consumer}/check.sh names
           $<TARGET_FILE:zelconfutils_archive>)
  # The compiler's own lister beside its archiver: only that reads what is optimised at link time.
  if(CMAKE_CXX_COMPILER_AR)
    string(REGEX REPLACE "ar(-[0-9.]+)?$" "nm\\1" lister "${CMAKE_CXX_COMPILER_AR}")
    set_tests_properties(defined_names PROPERTIES ENVIRONMENT "NM=${lister}")
  endif()
endif()

add_test(NAME include_rules COMMAND bash ${consumer}/../include_rules.sh)
