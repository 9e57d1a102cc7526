# What `cmake --install` puts where: the library, its headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS kecpp EXPORT kecppTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES kecpp.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kecpp)
foreach(layer IN LISTS KECPP_LAYERS)
  file(GLOB headers CONFIGURE_DEPENDS ${layer}/*.h)
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kecpp/${layer})
endforeach()

install(EXPORT kecppTargets NAMESPACE kecpp:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kecpp)
configure_package_config_file(cmake/kecppConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/kecppConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kecpp)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/kecppConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kecppConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/kecppConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kecpp)

configure_file(cmake/kecpp.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kecpp.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kecpp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
