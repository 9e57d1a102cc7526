# A port that builds the libraries from the source archive of a release, which lies beside this file:
#   scripts/source-archive && cp -r packaging/vcpkg/kecpp FOLDER
#   cp build/source/kecpp-*.tar.gz FOLDER/kecpp && vcpkg install kecpp --overlay-ports=FOLDER
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)

vcpkg_extract_source_archive(SOURCE_PATH
  ARCHIVE "${CMAKE_CURRENT_LIST_DIR}/kecpp-${VERSION}.tar.gz")
vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}" OPTIONS -DKECPP_DEVELOPER=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME kecpp CONFIG_PATH lib/cmake/kecpp)
vcpkg_fixup_pkgconfig()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share"
                    "${CURRENT_PACKAGES_DIR}/share/doc" "${CURRENT_PACKAGES_DIR}/share/lintian"
                    "${CURRENT_PACKAGES_DIR}/share/man")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
