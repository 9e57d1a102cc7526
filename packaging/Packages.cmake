# What cpack makes: libkecpp1 and libkecpp-inventory1 (the libraries), libkecpp-dev (headers, package
# files, reference, guides, examples), kecpp-tools (the programs), kecpp-publish (the publisher) and,
# where it is built, python3-kecpp, each with its debugging symbols apart. scripts/package calls it.

# Who made the packages, as Debian's own tools let one say it.
set(CPACK_PACKAGE_CONTACT "The kecpp authors <kecpp@localhost>")
if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
  set(CPACK_PACKAGE_CONTACT "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()

# The packages' documents, compressed the same way on every machine and at every time: hosts
# of two architectures share them.
set(KECPP_PACKAGE_REVISION 1 CACHE STRING "Counts the packages of one version of the library")
string(TIMESTAMP KECPP_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)  # or SOURCE_DATE_EPOCH
configure_file(packaging/changelog.in ${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog.Debian @ONLY)
configure_file(CHANGELOG.md ${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog COPYONLY)
set(documents)
foreach(document changelog changelog.Debian)
  set(compressed ${CMAKE_CURRENT_BINARY_DIR}/packaging/${document}.gz)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${KECPP_GZIP} -9nfk ${CMAKE_CURRENT_BINARY_DIR}/packaging/${document}
    DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/packaging/${document} VERBATIM)
  list(APPEND documents ${compressed})
endforeach()
add_custom_target(package_documents ALL DEPENDS ${documents})

set(CPACK_COMPONENTS_ALL library inventory development)
if(KECPP_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools publish)
endif()
if(KECPP_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libkecpp1)
set(CPACK_DEBIAN_INVENTORY_PACKAGE_NAME libkecpp-inventory1)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkecpp-dev)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kecpp-tools)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_NAME kecpp-publish)
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-kecpp)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES ${documents} packaging/copyright DESTINATION ${folder} COMPONENT ${component})
  install(FILES packaging/lintian/${CPACK_DEBIAN_${upper}_PACKAGE_NAME} COMPONENT ${component}
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides)
  file(READ packaging/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}.txt CPACK_DEBIAN_${upper}_DESCRIPTION)
endforeach()

# The guides lie beside the examples as they do here, so that their links lead somewhere. The
# reference is made by the target "docs", which scripts/package builds.
set(folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/libkecpp-dev)
install(DIRECTORY examples DESTINATION ${folder} COMPONENT development)
install(DIRECTORY docs DESTINATION ${folder} COMPONENT development
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "reference-start.md" EXCLUDE)
install(DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/reference/html DESTINATION ${folder}
        COMPONENT development OPTIONAL)

if(KECPP_BUILD_TOOLS)
  install(FILES examples/agent.xml tools/agent/prometheus/dashboard.json
                tools/agent/prometheus/rules.yml COMPONENT tools
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/kecpp-tools/examples)
  foreach(folder bash:bash-completion/completions zsh:zsh/vendor-completions)
    string(REPLACE ":" ";" folder ${folder})
    list(GET folder 0 from)
    list(GET folder 1 to)
    install(DIRECTORY completions/${from}/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/${to}
            COMPONENT tools PATTERN "*kecpp-publish*" EXCLUDE)
    install(DIRECTORY completions/${from}/ DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/${to}
            COMPONENT publish FILES_MATCHING PATTERN "*kecpp-publish*")
  endforeach()
endif()

if(KECPP_PYTHON)
  set(folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/python3-kecpp)
  install(FILES docs/python.md DESTINATION ${folder}/docs COMPONENT python)
  install(DIRECTORY examples/python DESTINATION ${folder}/examples COMPONENT python)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kecpp)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR}/packages)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS  # whatever the builder's umask is
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)  # quick: packaging/Finish.cmake compresses them for good
set(CPACK_DEBIAN_PACKAGE_SOURCE kecpp)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${KECPP_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_INVENTORY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
endif()

# What other packages of Debian the programs need is read from the programs. The library itself is
# not installed while they are made, so its own package is named here. Programs ask for this very
# version or a later one, compiling agents for this very one.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${CMAKE_CURRENT_BINARY_DIR} ${CMAKE_CURRENT_BINARY_DIR}/inventory)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(version ${PROJECT_VERSION}-${KECPP_PACKAGE_REVISION})
set(CPACK_DEBIAN_INVENTORY_PACKAGE_DEPENDS "libkecpp1 (>= ${version})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libkecpp1 (= ${version}), libkecpp-inventory1 (= ${version})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "kecpp-tools")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "pkgconf, cmake")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libkecpp-inventory1 (>= ${version})")
if(KECPP_PYTHON)  # the module is for one version of Python
  math(EXPR next_minor "${Python3_VERSION_MINOR} + 1")
  string(CONCAT CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "libkecpp-inventory1 (>= ${version}), "
         "python3 (>= 3.${Python3_VERSION_MINOR}~), python3 (<< 3.${next_minor})")
  set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/packaging/python3-kecpp)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${scripts}/postinst ${scripts}/prerm)
endif()
set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/packaging/kecpp-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_DEPENDS "libkecpp-inventory1 (>= ${version})")
set(CPACK_DEBIAN_PUBLISH_PACKAGE_RECOMMENDS "curl")
set(CPACK_DEBIAN_PUBLISH_PACKAGE_SUGGESTS "etcd-server")
set(scripts ${CMAKE_CURRENT_SOURCE_DIR}/packaging/kecpp-publish)
set(CPACK_DEBIAN_PUBLISH_PACKAGE_CONTROL_EXTRA
    ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)

set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_DEVELOPMENT_DEBUGINFO_PACKAGE OFF)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/packaging/Finish.cmake)
include(CPack)
