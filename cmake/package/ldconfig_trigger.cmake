# CPack runs this after it has made the packages. CPack's own scripts call ldconfig for each installation and removal of the
# library. This puts a trigger in their place, as Debian's packages do: ldconfig then runs once for all packages.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "/libqv-rtl[0-9]+_[^/]*\\.deb$")
    continue()
  endif()
  set(folder ${package}.unpacked)
  execute_process(COMMAND dpkg-deb -R ${package} ${folder} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${folder}/DEBIAN/postinst ${folder}/DEBIAN/postrm)
  file(WRITE ${folder}/DEBIAN/triggers "activate-noawait ldconfig\n")
  file(CHMOD ${folder}/DEBIAN/triggers PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  execute_process(COMMAND dpkg-deb --root-owner-group -b ${folder} ${package} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${folder})
endforeach()
