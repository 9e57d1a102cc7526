# What `cmake --install` puts where: the libraries, their headers, a CMake package and
# pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS kecpp EXPORT kecppTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS kecpp_inventory EXPORT kecppTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT inventory NAMELINK_COMPONENT development)
install(FILES inventory/kecpp/fleet.h inventory/kecpp/inventory.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kecpp
        COMPONENT development)

# The public headers are kecpp.h and what it includes, directly or through another header. A header
# that it does not reach is a helper of our own and stays here.
set(KECPP_PUBLIC_HEADERS kecpp.h)
set(unread ${KECPP_PUBLIC_HEADERS})
while(unread)
  list(POP_FRONT unread header)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
  file(STRINGS ${header} includes REGEX "^#include \"")
  list(TRANSFORM includes REPLACE "^#include \"([^\"]*)\".*" "\\1")
  list(REMOVE_ITEM includes ${KECPP_PUBLIC_HEADERS})
  list(APPEND KECPP_PUBLIC_HEADERS ${includes})
  list(APPEND unread ${includes})
endwhile()
foreach(header IN LISTS KECPP_PUBLIC_HEADERS)
  get_filename_component(layer ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kecpp/${layer}
          COMPONENT development)
endforeach()

install(EXPORT kecppTargets NAMESPACE kecpp:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kecpp
        COMPONENT development)
configure_package_config_file(cmake/kecppConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/kecppConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kecpp)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/kecppConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kecppConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/kecppConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kecpp COMPONENT development)

# Relative to the file itself, so that the package may be unpacked anywhere.
file(RELATIVE_PATH KECPP_PC_PREFIX /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
foreach(name kecpp kecpp-inventory)
  configure_file(cmake/${name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
