# Compiler settings that every target of the project shares. All of them are those of its folders: a
# project that takes this one in as a part gets none.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
endif()
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# CMake does not recognise the compiler's own folder of headers when there is a space in its path,
# and would name it once more, before those of C++.
if(KECPP_I386_SYSROOT)
  list(APPEND CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES ${KECPP_I386_SYSROOT}/usr/include)
endif()

find_package(Threads REQUIRED)

# Also on 32-bit hosts the clock and the file sizes are 64 bits wide; _GNU_SOURCE brings memmem.
add_compile_definitions(_GNU_SOURCE _FILE_OFFSET_BITS=64 _TIME_BITS=64)

# Goes with -Bsymbolic-functions (Layers.cmake).
add_compile_options(-fno-semantic-interposition)

# Everything is bound when it is loaded (-z now): the linkage table's detour would only cost, most of
# all on 32-bit x86.
add_compile_options(-fno-plt)

# Another compiler may warn of what ours do not: only the presets, and with them CI, make an error
# of a warning (CMAKE_COMPILE_WARNING_AS_ERROR).
if(KECPP_DEVELOPER)
  add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
endif()
if(KECPP_SANITIZE)
  add_compile_options(-fsanitize=${KECPP_SANITIZE} -fno-omit-frame-pointer -g
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KECPP_SANITIZE})
else()
  add_compile_options(-fstack-protector-strong
                      $<$<CONFIG:Release,RelWithDebInfo>:-D_FORTIFY_SOURCE=2>)
  add_link_options(-Wl,-z,relro -Wl,-z,now)
endif()
if(KECPP_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(KECPP_THREAD_SAFETY_ANALYSIS)
  add_compile_options(-Wthread-safety)
endif()
