# SPDX-License-Identifier: MIT
#
# Builds for 32-bit x86 with the compiler of a 64-bit Debian, against the packages that
# `scripts/sysroot i386` has unpacked. Executables carry the loader and the library path of that
# folder, so that they run anywhere on this machine; shared libraries carry neither. With
# KECPP_I386_FOR_OTHERS executables carry neither as well: they are for 32-bit hosts.
include(${CMAKE_CURRENT_LIST_DIR}/Sysroot.cmake)
kecpp_use_sysroot(i386 i686 i386-linux-gnu)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KECPP_I386_FOR_OTHERS)

set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_COMPILER gcc)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpversion OUTPUT_VARIABLE _version
                OUTPUT_STRIP_TRAILING_WHITESPACE)
string(REGEX REPLACE "\\..*" "" _version ${_version})

# The compiler's own folder lacks the 32-bit halves; they stand in the package's.
set(_gcc ${_lib}/gcc/i686-linux-gnu/${_version})
set(_headers ${_sysroot}/usr/include)
set(CMAKE_C_FLAGS_INIT "-m32 \"-B${_gcc}\"")
set(CMAKE_CXX_FLAGS_INIT "-m32 \"-B${_gcc}\" -nostdinc++ \
-isystem \"${_headers}/c++/${_version}\" \
-isystem \"${_headers}/i386-linux-gnu/c++/${_version}\" \
-isystem \"${_headers}/c++/${_version}/backward\"")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "\"-L${_gcc}\"")
set(CMAKE_EXE_LINKER_FLAGS_INIT "\"-L${_gcc}\"")
if(NOT KECPP_I386_FOR_OTHERS)
  # The program's path also serves the libraries that a library needs, unless that has the newer tag.
  string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,--disable-new-dtags")
  string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,--disable-new-dtags \
\"-Wl,-rpath,${_sysroot}/lib/i386-linux-gnu:${_lib}/i386-linux-gnu\" \
\"-Wl,--dynamic-linker,${_sysroot}/lib/ld-linux.so.2\"")
endif()
