# Makes the `folders` that files are installed in, readable for all whatever the umask. Those that
# are there are left alone.
foreach(folder IN LISTS folders)
  cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
  set(path "$ENV{DESTDIR}${folder}")
  set(new "")
  while(NOT EXISTS "${path}")
    list(PREPEND new "${path}")
    cmake_path(GET path PARENT_PATH path)
  endwhile()
  foreach(path IN LISTS new)
    file(MAKE_DIRECTORY "${path}")
    file(CHMOD "${path}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
                                     GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  endforeach()
endforeach()
