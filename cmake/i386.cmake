# SPDX-License-Identifier: MIT
#
# Builds for 32-bit x86 with the compiler of a 64-bit Debian, against the packages that
# `scripts/sysroot i386` has unpacked. Executables carry the loader and the library path of that
# folder, so that they run anywhere on this machine; shared libraries carry neither. With
# KECPP_I386_FOR_OTHERS executables carry neither as well: they are for 32-bit hosts.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

if(NOT KECPP_I386_SYSROOT)
  set(KECPP_I386_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/i386-sysroot)
endif()
get_filename_component(KECPP_I386_SYSROOT ${KECPP_I386_SYSROOT} ABSOLUTE)
if(NOT EXISTS ${KECPP_I386_SYSROOT}/.complete)
  message(FATAL_ERROR "There are no 32-bit packages in ${KECPP_I386_SYSROOT}. Run "
                      "scripts/sysroot i386 first.")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KECPP_I386_SYSROOT KECPP_I386_FOR_OTHERS)

set(CMAKE_CXX_COMPILER g++)
set(CMAKE_C_COMPILER gcc)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpversion OUTPUT_VARIABLE _version
                OUTPUT_STRIP_TRAILING_WHITESPACE)
string(REGEX REPLACE "\\..*" "" _version ${_version})

set(CMAKE_SYSROOT ${KECPP_I386_SYSROOT})
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${KECPP_I386_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(_lib ${KECPP_I386_SYSROOT}/usr/lib)
set(ENV{PKG_CONFIG_LIBDIR} ${_lib}/i386-linux-gnu/pkgconfig:${KECPP_I386_SYSROOT}/usr/share/pkgconfig)

# The compiler's own folder lacks the 32-bit halves; they stand in the package's.
set(_gcc ${_lib}/gcc/i686-linux-gnu/${_version})
set(_headers ${KECPP_I386_SYSROOT}/usr/include)
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
\"-Wl,-rpath,${KECPP_I386_SYSROOT}/lib/i386-linux-gnu:${_lib}/i386-linux-gnu\" \
\"-Wl,--dynamic-linker,${KECPP_I386_SYSROOT}/lib/ld-linux.so.2\"")
endif()

set(KECPP_GOOGLETEST_SOURCE ${KECPP_I386_SYSROOT}/usr/src/googletest)
