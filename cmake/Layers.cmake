# The library's folders, lowest layer first. Each is compiled once as an object library; the shared
# library and the static archive are made of the same objects.
find_package(CURL REQUIRED)

set(KECPP_LAYERS foundation xml stub/base config http stub/classes soap instance service/call
                 datasync service/entry)
set(KECPP_OBJECT_TARGETS)
foreach(layer IN LISTS KECPP_LAYERS)
  string(REPLACE "/" "_" name kecpp_${layer})
  file(GLOB sources CONFIGURE_DEPENDS ${layer}/*.cpp)
  if(sources)
    add_library(${name} OBJECT ${sources})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    list(APPEND KECPP_OBJECT_TARGETS ${name})
  endif()
endforeach()

add_library(kecpp SHARED)
add_library(kecpp::kecpp ALIAS kecpp)
add_library(kecpp_static STATIC)
if(NOT PROJECT_IS_TOP_LEVEL)
  set_target_properties(kecpp_static PROPERTIES EXCLUDE_FROM_ALL ON)
endif()
foreach(target kecpp kecpp_static)
  target_link_libraries(${target} PRIVATE ${KECPP_OBJECT_TARGETS})
  target_link_libraries(${target} PRIVATE CURL::libcurl Threads::Threads)
  target_include_directories(${target} INTERFACE
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kecpp>)
  target_compile_features(${target} INTERFACE cxx_std_17)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME kecpp LINKER_LANGUAGE CXX)
endforeach()

# The shared library also exports what the headers define inline. The compiler keeps every inline
# function of that one source, and the linker drops those that are not ours.
target_sources(kecpp PRIVATE kecpp.cpp)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT KECPP_SANITIZE)
  set_source_files_properties(kecpp.cpp PROPERTIES COMPILE_OPTIONS
    "-fkeep-inline-functions;-ffunction-sections;-fdata-sections")
  target_link_options(kecpp PRIVATE -Wl,--gc-sections)
endif()

# -z nodelete: a detached thread returns through the library's code after its last word, so the
# code must stay mapped even when the program unloads the library.
set_target_properties(kecpp PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1)
# Nobody is meant to put a function of their own in the place of one of the library's: calls inside
# the library are bound when it is linked.
target_link_options(kecpp PRIVATE -Wl,-z,nodelete -Wl,-Bsymbolic-functions
                    -Wl,--version-script=${CMAKE_CURRENT_SOURCE_DIR}/cmake/libkecpp.map)
set_property(TARGET kecpp APPEND PROPERTY LINK_DEPENDS
             ${CMAKE_CURRENT_SOURCE_DIR}/cmake/libkecpp.map)
if(NOT KECPP_SANITIZE)
  target_link_options(kecpp PRIVATE -Wl,--no-undefined)
endif()
