# Completes the folder that a package is made of with what only packages have.
set(usr ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX})
set(doc ${usr}/share/doc/${CPACK_PACKAGE_NAME})

execute_process(COMMAND strip --remove-section=.comment --remove-section=.note
                ${usr}/sbin/ov_conf ${usr}/sbin/ov_confctl COMMAND_ERROR_IS_FATAL ANY)

function(compress)
  execute_process(COMMAND gzip -n -9 ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(GLOB pages ${usr}/share/man/man*/*)
foreach(page IN LISTS pages)
  if(IS_SYMLINK ${page})
    file(READ_SYMLINK ${page} target)
    file(CREATE_LINK ${target}.gz ${page}.gz SYMBOLIC)
    file(REMOVE ${page})
  else()
    compress(${page})
  endif()
endforeach()

file(WRITE ${doc}/changelog.Debian
"${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium

  * Built from the sources of version ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${OV_PACKAGE_DATE}
")
compress(${doc}/changelog.Debian)
configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright ${doc}/copyright COPYONLY)

# What was made here has the umask of whoever packs.
set(readable OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(CHMOD ${doc}/changelog.Debian.gz ${doc}/copyright PERMISSIONS ${readable})
file(GLOB_RECURSE paths LIST_DIRECTORIES true ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(path IN LISTS paths)
  if(IS_DIRECTORY ${path})
    file(CHMOD ${path} PERMISSIONS ${readable} OWNER_EXECUTE GROUP_EXECUTE WORLD_EXECUTE)
  endif()
endforeach()
