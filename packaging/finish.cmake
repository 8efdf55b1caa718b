# CPack takes each link to the program for a copy of it in Installed-Size: counts again, as Debian
# does, and packs again.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  # Should this fail, no package is left that looks finished.
  set(folder ${package}.unpacked)
  file(RENAME ${package} ${package}.unfinished)
  file(REMOVE_RECURSE ${folder})
  execute_process(COMMAND dpkg-deb --raw-extract ${package}.unfinished ${folder} COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE files LIST_DIRECTORIES true ${folder}/*)
  list(FILTER files EXCLUDE REGEX "\\.unpacked/DEBIAN")
  set(size 0) # in KiB
  foreach(file IN LISTS files)
    set(bytes 1)
    if(NOT IS_SYMLINK ${file} AND NOT IS_DIRECTORY ${file})
      file(SIZE ${file} bytes)
    endif()
    math(EXPR size "${size} + (${bytes} + 1023) / 1024")
  endforeach()

  file(READ ${folder}/DEBIAN/control control)
  string(REGEX REPLACE "Installed-Size: [0-9]+" "Installed-Size: ${size}" control "${control}")
  file(WRITE ${folder}/DEBIAN/control "${control}")
  file(CHMOD_RECURSE ${folder}/DEBIAN
       FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
       DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
                             GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${folder} ${package}
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE ${folder} ${package}.unfinished)
endforeach()
