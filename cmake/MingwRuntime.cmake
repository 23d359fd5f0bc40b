# SPDX-License-Identifier: MIT
# Windows looks for a program's DLLs in the program's own folder: all programs and DLLs of the build
# go to one, and the compiler's runtime DLLs are copied there.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
# One of the three that hold the exceptions is the compiler's own.
foreach(name libstdc++-6 libgcc_s_seh-1 libgcc_s_dw2-1 libgcc_s_sjlj-1 libwinpthread-1)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}.dll
                  OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(IS_ABSOLUTE "${path}")  # the bare name says that there is none
    file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} FOLLOW_SYMLINK_CHAIN)
  endif()
endforeach()
