# What `cmake --install` puts where: the library, its headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)
find_program(KECPP_GZIP gzip REQUIRED)

install(TARGETS kecpp EXPORT kecppTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT library NAMELINK_COMPONENT development)
install(FILES kecpp.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kecpp COMPONENT development)
# Helpers of our own, which no public header includes, stay here.
set(KECPP_PRIVATE_HEADERS
    datasync/ComputerSystems.h datasync/FullRequest.h datasync/ListValue.h datasync/ObjectTarget.h
    datasync/PropertyList.h datasync/RoleMemory.h datasync/StaleObjects.h datasync/SyncSeams.h
    datasync/SyncState.h datasync/UpdateSetWalk.h datasync/WalkRoom.h foundation/BlockSize.h
    http/EasyOption.h http/HandleWait.h http/HeaderLines.h http/HttpTransfer.h
    http/SocketRegistry.h instance/HostLinks.h instance/KECacheGuard.h service/call/MgmtdWatchSeams.h
    service/entry/ServiceContent.h stub/base/StubCast.h stub/classes/AssocList.h stub/classes/EndMatch.h
    stub/classes/RoleLinks.h xml/FixedText.h xml/KEXmlCursor.h)
set(KECPP_PUBLIC_HEADERS)
foreach(layer IN LISTS KECPP_LAYERS)
  file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} ${layer}/*.h)
  list(REMOVE_ITEM headers ${KECPP_PRIVATE_HEADERS})
  list(APPEND KECPP_PUBLIC_HEADERS ${headers})
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kecpp/${layer}
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
configure_file(cmake/kecpp.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kecpp.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kecpp.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
