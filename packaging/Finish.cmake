# Runs after cpack has made its packages, and does to the libraries' what cpack cannot: those for 32
# and 64 bits may be installed on one host, and the linker's cache is refreshed by dpkg's own
# trigger instead of by scripts.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  get_filename_component(name ${package} NAME)
  if(NOT name MATCHES "^libkecpp")
    continue()
  endif()
  set(root ${CPACK_TEMPORARY_DIRECTORY}/finish)
  file(REMOVE_RECURSE ${root})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${root} COMMAND_ERROR_IS_FATAL ANY)
  file(READ ${root}/DEBIAN/control control)
  string(REPLACE "\nDescription:" "\nMulti-Arch: same\nDescription:" control "${control}")
  file(WRITE ${root}/DEBIAN/control "${control}")
  if(name MATCHES "^libkecpp(-inventory)?1_")
    file(REMOVE ${root}/DEBIAN/postinst ${root}/DEBIAN/postrm)
    file(WRITE ${root}/DEBIAN/triggers "activate-noawait ldconfig\n")
  endif()
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${root} ${package}
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${root})
endforeach()
