# SPDX-License-Identifier: MIT
# The warnings of our own targets. They are errors only where a preset says so
# (CMAKE_COMPILE_WARNING_AS_ERROR), and nothing of this reaches a project that uses the library.
function(zelconfutils_warnings target)
  if(NOT zelconfutils_IS_TOP_LEVEL)
    return()  # a parent that makes warnings errors has its own compiler's, not ours
  endif()
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                             -Wcast-qual -Wnon-virtual-dtor)
  elseif(MSVC)
    target_compile_options(${target} PRIVATE /W4)
  endif()
endfunction()
