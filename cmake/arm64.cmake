# SPDX-License-Identifier: MIT
#
# Builds for 64-bit ARM with Debian's cross compiler (g++-aarch64-linux-gnu), against the packages
# that `scripts/sysroot arm64` has unpacked. Programs run under qemu-aarch64 (qemu-user).
include(${CMAKE_CURRENT_LIST_DIR}/Sysroot.cmake)
kecpp_use_sysroot(arm64 aarch64 aarch64-linux-gnu)

set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-aarch64;-L;${_sysroot}")
