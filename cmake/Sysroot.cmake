# SPDX-License-Identifier: MIT
#
# kecpp_use_sysroot(ARCHITECTURE PROCESSOR TRIPLET): for toolchain files. Looks for headers, libraries
# and packages in what `scripts/sysroot ARCHITECTURE` has unpacked below build/, or in the folder
# KECPP_<ARCHITECTURE>_SYSROOT, and sets _sysroot and _lib, its folder of libraries.
macro(kecpp_use_sysroot architecture processor triplet)
  string(TOUPPER KECPP_${architecture}_SYSROOT _name)
  if(NOT ${_name})
    set(${_name} ${CMAKE_CURRENT_LIST_DIR}/../build/${architecture}-sysroot)
  endif()
  get_filename_component(${_name} ${${_name}} ABSOLUTE)
  set(_sysroot ${${_name}})
  if(NOT EXISTS ${_sysroot}/.complete)
    message(FATAL_ERROR "There are no packages in ${_sysroot}. Run scripts/sysroot ${architecture} "
                        "first.")
  endif()
  list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ${_name})

  set(CMAKE_SYSTEM_NAME Linux)
  set(CMAKE_SYSTEM_PROCESSOR ${processor})
  set(CMAKE_SYSROOT ${_sysroot})
  set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})
  set(CMAKE_FIND_ROOT_PATH ${_sysroot})
  set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
  set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
  set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
  set(_lib ${_sysroot}/usr/lib)
  set(ENV{PKG_CONFIG_LIBDIR} ${_lib}/${triplet}/pkgconfig:${_sysroot}/usr/share/pkgconfig)
  set(KECPP_GOOGLETEST_SOURCE ${_sysroot}/usr/src/googletest)
endmacro()
