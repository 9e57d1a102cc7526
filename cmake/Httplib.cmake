# The HTTP library of the programs. Debian's is compiled, and for 32 bits with the system's own,
# narrow time_t, which its classes and functions are made of: what uses them must be as well. Nothing
# that libkecpp's headers declare depends on that width.
find_package(PkgConfig REQUIRED)
pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET GLOBAL cpp-httplib)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  target_compile_options(PkgConfig::HTTPLIB INTERFACE -U_TIME_BITS)
endif()
