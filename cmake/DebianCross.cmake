# Toolchain for another of Debian's architectures: Debian's cross compiler, and the headers and
# libraries of that architecture in build/sysroot-ARCH, which packaging/sysroot makes. A preset names
# the architecture in LINEUP_ARCH (armhf or arm64).

set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES LINEUP_ARCH)

if(LINEUP_ARCH STREQUAL "armhf")
  set(CMAKE_SYSTEM_PROCESSOR armv7l)
  set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
  set(emulator qemu-arm)
elseif(LINEUP_ARCH STREQUAL "arm64")
  set(CMAKE_SYSTEM_PROCESSOR aarch64)
  set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
  set(emulator qemu-aarch64)
else()
  message(FATAL_ERROR "LINEUP_ARCH is '${LINEUP_ARCH}': it must be armhf or arm64")
endif()

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-g++)
set(CMAKE_STRIP ${CMAKE_LIBRARY_ARCHITECTURE}-strip)
get_filename_component(CMAKE_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-${LINEUP_ARCH}"
                       ABSOLUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${emulator} -L "${CMAKE_SYSROOT}")

# Programs are the build machine's (the Thrift compiler), libraries and headers the target's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
