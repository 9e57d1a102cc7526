# Whether the package for Python is built: AUTO, the default, means where pybind11 and Python's
# headers are, for this machine, and not under a sanitizer, whose runtime Python would have to load
# first.
set(KECPP_BUILD_PYTHON AUTO CACHE STRING "Build the package for Python: AUTO, ON, OFF")

set(KECPP_PYTHON OFF)
if(KECPP_BUILD_PYTHON STREQUAL "AUTO")
  if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CROSSCOMPILING AND NOT KECPP_SANITIZE)
    find_package(Python3 3.11 QUIET COMPONENTS Interpreter Development.Module)
    if(Python3_FOUND)
      find_package(pybind11 2.10 QUIET CONFIG)
      set(KECPP_PYTHON ${pybind11_FOUND})
    endif()
  endif()
elseif(KECPP_BUILD_PYTHON)
  find_package(Python3 3.11 REQUIRED COMPONENTS Interpreter Development.Module)
  find_package(pybind11 2.10 REQUIRED CONFIG)
  set(KECPP_PYTHON ON)
endif()
if(KECPP_PYTHON)
  add_subdirectory(python)
endif()
