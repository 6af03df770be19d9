# add_console_library(TARGET SOURCES... ) and add_console_program(TARGET SOURCES...): a library or
# program of our own code, which compiles without a warning. Included headers are named from the
# project's root.

function(warnings_are_errors target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Werror)
  target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}")
  if(LINEUP_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage)
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
    target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/counts_at_end.cpp")
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
