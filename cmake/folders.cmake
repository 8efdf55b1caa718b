# Makes the `folders` that files are installed in, readable for all whatever the umask. Those that
# are there are left alone; the others are in `new_folders`.
set(new_folders "")

# Fish looks for nothing in /usr/local: its folder for the administrator gets links to what is there.
set(fish_folder "")
execute_process(COMMAND test -w /etc RESULT_VARIABLE closed)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr/local" AND (NOT closed OR NOT "$ENV{DESTDIR}" STREQUAL ""))
  set(fish_folder /etc/fish/completions)
endif()

foreach(folder IN LISTS folders fish_folder)
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
  list(APPEND new_folders ${new})
endforeach()
