# add_console_library(TARGET SOURCES... ) and add_console_program(TARGET SOURCES...): a library or
# program of our own code, which compiles without a warning. Included headers are named from the
# project's root.

function(warnings_are_errors target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Werror)
  target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}")
  if(LINEUP_COVERAGE)
    # In "continuous mode" the counters stand in a file that is mapped into memory: they are there
    # however the process ends.
    target_compile_options(${target} PRIVATE -fprofile-instr-generate -fcoverage-mapping
      "SHELL:-mllvm -runtime-counter-relocation")
  endif()
endfunction()

function(add_console_library target)
  add_library(${target} STATIC ${ARGN})
  warnings_are_errors(${target})
  if(TARGET console_precompiled)
    target_precompile_headers(${target} REUSE_FROM console_precompiled)
  endif()
endfunction()

function(add_console_program target)
  add_executable(${target} ${ARGN})
  warnings_are_errors(${target})
  if(LINEUP_COVERAGE)
    target_link_options(${target} PRIVATE -fprofile-instr-generate)
  endif()
endfunction()
