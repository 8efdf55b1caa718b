# Adds to the file `record` what was installed, for the target uninstall: folders before what is in
# them. What is staged for a package is not installed.
if("$ENV{DESTDIR}" STREQUAL "" AND NOT CMAKE_INSTALL_PREFIX MATCHES "/_CPack_Packages/")
  set(paths "")
  if(EXISTS "${record}")
    file(STRINGS "${record}" paths)
  endif()
  list(APPEND paths ${new_folders} ${CMAKE_INSTALL_MANIFEST_FILES})
  list(REMOVE_DUPLICATES paths)
  list(JOIN paths "\n" paths)
  file(WRITE "${record}" "${paths}\n")
endif()
