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

add_test(NAME include_rules COMMAND bash ${consumer}/../include_rules.sh)
