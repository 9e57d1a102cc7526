# SPDX-License-Identifier: MIT
#
# Builds for 64-bit ARM with Debian's cross compiler (g++-aarch64-linux-gnu), against the packages
# that scripts/sysroot arm64 has unpacked. Programs run under qemu-aarch64 (qemu-user).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

if(NOT KECPP_ARM64_SYSROOT)
  set(KECPP_ARM64_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot)
endif()
get_filename_component(KECPP_ARM64_SYSROOT ${KECPP_ARM64_SYSROOT} ABSOLUTE)
if(NOT EXISTS ${KECPP_ARM64_SYSROOT}/.complete)
  message(FATAL_ERROR "There are no packages in ${KECPP_ARM64_SYSROOT}. Run scripts/sysroot arm64 "
                      "first.")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KECPP_ARM64_SYSROOT)

set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)

set(CMAKE_SYSROOT ${KECPP_ARM64_SYSROOT})
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${KECPP_ARM64_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(_lib ${KECPP_ARM64_SYSROOT}/usr/lib/aarch64-linux-gnu)
set(ENV{PKG_CONFIG_LIBDIR} ${_lib}/pkgconfig:${KECPP_ARM64_SYSROOT}/usr/share/pkgconfig)

set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-aarch64;-L;${KECPP_ARM64_SYSROOT}")
set(KECPP_GOOGLETEST_SOURCE ${KECPP_ARM64_SYSROOT}/usr/src/googletest)
