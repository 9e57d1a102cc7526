# Runs after cpack has made its packages, and does what cpack cannot: the libraries' packages for 32
# and 64 bits may be installed on one host, the linker's cache is refreshed by dpkg's own trigger
# instead of by scripts, and the packages of one commit are the same wherever they are built.

# write_checksums FOLDER: cpack names the files of debugging symbols with their absolute paths.
function(write_checksums root)
  set(checksums "")
  file(GLOB_RECURSE files RELATIVE ${root} LIST_DIRECTORIES false ${root}/*)
  foreach(file IN LISTS files)
    if(NOT file MATCHES "^DEBIAN/" AND NOT IS_SYMLINK ${root}/${file})
      file(MD5 ${root}/${file} checksum)
      string(APPEND checksums "${checksum}  ${file}\n")
    endif()
  endforeach()
  file(WRITE ${root}/DEBIAN/md5sums "${checksums}")
endfunction()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  get_filename_component(name ${package} NAME)
  set(root ${CPACK_TEMPORARY_DIRECTORY}/finish)
  file(REMOVE_RECURSE ${root})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${root} COMMAND_ERROR_IS_FATAL ANY)
  if(name MATCHES "^libkecpp")
    file(READ ${root}/DEBIAN/control control)
    string(REPLACE "\nDescription:" "\nMulti-Arch: same\nDescription:" control "${control}")
    file(WRITE ${root}/DEBIAN/control "${control}")
  endif()
  if(name MATCHES "^libkecpp(-inventory)?1_")
    file(REMOVE ${root}/DEBIAN/postinst ${root}/DEBIAN/postrm)
    file(WRITE ${root}/DEBIAN/triggers "activate-noawait ldconfig\n")
  endif()
  write_checksums(${root})
  execute_process(
    COMMAND dpkg-deb --root-owner-group --threads-max=1 -Zxz --build ${root} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${root})
endforeach()
