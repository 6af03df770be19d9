# The Thrift compiler and library, and a function that turns interface definitions into a library.

find_program(THRIFT_COMPILER thrift REQUIRED)
find_path(THRIFT_INCLUDE_DIR thrift/Thrift.h REQUIRED)
# The static library leaves OpenSSL, which only the TLS sockets need, out of the process.
find_library(THRIFT_LIBRARY NAMES libthrift.a thrift REQUIRED)

add_library(Thrift::thrift UNKNOWN IMPORTED)
set_target_properties(Thrift::thrift PROPERTIES
  IMPORTED_LOCATION "${THRIFT_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${THRIFT_INCLUDE_DIR}")

# add_thrift_library(TARGET DEFINITIONS file.thrift... [SERVICES Name...] [RENAME member name])
#
# A static library of the C++ code generated from DEFINITIONS (each names its own namespace and its
# types; the one with SERVICES may include the others). Its headers are system headers to whoever
# links it: the Thrift library's own warn under C++17 and later.
#
# Enumerations are generated without a type, and a value that none of them names would then be undefined
# behaviour. They get int32_t, their type on the wire, so that any value received is kept.
# An element that is read is moved into its list, where the generator would copy it: 4 % of the instructions
# that the reading of ten thousand services takes.
# RENAME gives a member, in code and in printed text, a name that the definition language reserves.
function(add_thrift_library target)
  cmake_parse_arguments(ARG "" "" "DEFINITIONS;SERVICES;RENAME" ${ARGN})
  set(directory "${CMAKE_CURRENT_BINARY_DIR}/generated")
  file(MAKE_DIRECTORY "${directory}")
  set(sources)
  set(headers)
  foreach(definition IN LISTS ARG_DEFINITIONS)
    get_filename_component(name "${definition}" NAME_WE)
    list(APPEND sources "${directory}/${name}_types.cpp")
    list(APPEND headers "${directory}/${name}_types.h")
  endforeach()
  foreach(service IN LISTS ARG_SERVICES)
    list(APPEND sources "${directory}/${service}.cpp")
    list(APPEND headers "${directory}/${service}.h")
  endforeach()
  list(TRANSFORM ARG_DEFINITIONS PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
  set(commands)
  foreach(definition IN LISTS ARG_DEFINITIONS)
    list(APPEND commands COMMAND "${THRIFT_COMPILER}" --gen cpp:no_skeleton,moveable_types
         -out "${directory}" "${definition}")
  endforeach()
  list(APPEND commands COMMAND sed -i "s/^  enum type {/  enum type : int32_t {/" ${headers})
  list(APPEND commands COMMAND sed -i -E "s/push_back\\((_elem[0-9]+)\\)/push_back(std::move(\\1))/" ${sources})
  if(ARG_RENAME)
    list(GET ARG_RENAME 0 member)
    list(GET ARG_RENAME 1 name)
    list(APPEND commands COMMAND sed -i -E "s/\\b(__set_)?${member}\\b/\\1${name}/g" ${sources} ${headers})
  endif()
  add_custom_command(OUTPUT ${sources} ${headers} ${commands}
    DEPENDS ${ARG_DEFINITIONS} COMMENT "Generating ${target} from its interface definition" VERBATIM)
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} SYSTEM PUBLIC "${directory}")
  target_link_libraries(${target} PUBLIC Thrift::thrift)
endfunction()
