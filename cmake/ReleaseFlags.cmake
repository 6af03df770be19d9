# How the programs are compiled for release: small, and hardened as far as the compiler and the
# processor can. Other build types are made position-independent and are otherwise left as CMake has them.

include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckPIESupported)

set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

# Position-independent programs, which the system loads at an address of its choice.
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# -U first: some compilers predefine a level, and a redefinition is a warning.
add_compile_options("$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection
        -fcf-protection -mbranch-protection=standard)  # the last two: x86, and 64-bit ARM
  string(MAKE_C_IDENTIFIER "HAVE${flag}" have)
  check_cxx_compiler_flag(${flag} ${have})
  if(${have})
    add_compile_options("$<$<CONFIG:Release>:${flag}>")
  endif()
endforeach()

# The objects hold both code and what the link-time optimizer needs: the programs that are shipped
# come out smaller, and the tests, which are many, link quickly.
add_compile_options("$<$<CONFIG:Release>:-flto=auto;-ffat-lto-objects>")
set(shipped "$<BOOL:$<TARGET_PROPERTY:LINEUP_SHIPPED>>")
add_link_options("$<$<CONFIG:Release>:$<IF:${shipped},-flto=auto,-fno-lto>>")

# The C++ library and libgcc are linked statically into the shipped programs: the loader takes as long
# to resolve and relocate them as for everything else, and a megabyte of memory.
add_link_options("$<$<AND:$<CONFIG:Release>,${shipped}>:-static-libstdc++;-static-libgcc>")
# Fatal, because a linker that does not support it for the processor only warns.
check_linker_flag(CXX "LINKER:--fatal-warnings,-z,pack-relative-relocs" HAVE_PACKED_RELOCATIONS)
if(HAVE_PACKED_RELOCATIONS)
  add_link_options("$<$<CONFIG:Release>:LINKER:-z,pack-relative-relocs>")
endif()

# ship_program(PROGRAM): optimizes a program as a whole, and installs it.
function(ship_program program)
  set_target_properties(${program} PROPERTIES LINEUP_SHIPPED ON)
  install(TARGETS ${program})
endfunction()

# optimize_for_size(TARGET): for what works for a person, who waits for none of it. Its code is resident
# from the first prompt on, because the kernel maps sixteen pages around each that is used.
function(optimize_for_size target)
  target_compile_options(${target} PRIVATE "$<$<CONFIG:Release>:-Os>")
endfunction()

# Full RELRO: all symbols are resolved at start, and the relocations are read-only then.
add_link_options("$<$<CONFIG:Release>:-Wl,-z,relro,-z,now,-z,noexecstack,--as-needed>")
