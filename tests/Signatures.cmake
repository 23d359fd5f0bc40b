# SPDX-License-Identifier: MIT
# Of each row of signatures.txt the statement that takes what it names as exactly what it says. The
# compiler shows a row that is wrong.
set(rows_file ${CMAKE_CURRENT_LIST_DIR}/signatures.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${rows_file})
file(READ ${rows_file} rows)
string(REPLACE ";" "" rows "${rows}")
string(REPLACE "\n" ";" rows "${rows}")
set(statements)
set(number 0)
foreach(row IN LISTS rows)
  math(EXPR number "${number} + 1")
  if(row MATCHES "^\\[(.*)\\]$")
    string(REPLACE ", " ";" classes "${CMAKE_MATCH_1}")
    continue()
  elseif(row MATCHES "^(#.*)?$")
    continue()
  elseif(row MATCHES "^Type(\\(.*\\))$")
    set(statement "Is<Type (*)${CMAKE_MATCH_1}>(&Made)")
  elseif(row MATCHES "^(.*[ *&])(operator[^a-zA-Z ]+|[a-zA-Z]+)(\\(.*\\).*)$")
    set(statement "Is<${CMAKE_MATCH_1}(Type::*)${CMAKE_MATCH_3}>(&Type::${CMAKE_MATCH_2})")
  elseif(row MATCHES "^(.*) ([a-zA-Z]+)$")
    set(statement "Is<${CMAKE_MATCH_1} Type::*>(&Type::${CMAKE_MATCH_2})")
  else()
    message(FATAL_ERROR "${rows_file}:${number}: no declaration: ${row}")
  endif()
  foreach(class IN LISTS classes)
    string(APPEND statements
           "#line ${number} \"${rows_file}\"\n{ using Type = ${class}; ${statement}; }\n")
  endforeach()
endforeach()
file(CONFIGURE OUTPUT signatures.inc CONTENT "${statements}" @ONLY)

# As programs of users are built: in both languages, against the library. Where Clang is at hand
# beside another compiler, it has a look too.
find_program(ZELCONFUTILS_CLANG NAMES clang++ clang++-14)
foreach(standard 17 20)
  set(name signatures_c++${standard})
  add_executable(${name} SignaturesTest.cpp)
  set_target_properties(${name} PROPERTIES CXX_STANDARD ${standard} CXX_EXTENSIONS OFF)
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR})
  target_link_libraries(${name} PRIVATE zelconfutils::zelconfutils)
  zelconfutils_warnings(${name})
  if(NOT WIN32)
    add_test(NAME ${name} COMMAND ${name})
    if(ZELCONFUTILS_CLANG AND NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
      add_test(NAME ${name}_clang
               COMMAND ${ZELCONFUTILS_CLANG} -std=c++${standard} -fsyntax-only -Wall -Wextra
                       -Wpedantic -Wshadow -Wconversion -Werror -I${PROJECT_SOURCE_DIR}/include
                       -I${CMAKE_CURRENT_BINARY_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/SignaturesTest.cpp)
    endif()
  endif()
endforeach()
