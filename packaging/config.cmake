# Read by each run of cpack, before it packs.
if(NOT CPACK_PACKAGE_CONTACT MATCHES "^[^<>@]+ <[^<>@ ]+@[^<>@ ]+\\.[^<>@. ]+>$" OR
   CPACK_PACKAGE_CONTACT MATCHES "[@.](localhost|localdomain)[.>]")
  message(FATAL_ERROR
    "The package needs somebody to write to, and \"${CPACK_PACKAGE_CONTACT}\" is nobody. Say who:\n"
    "  cmake -D OV_CONTACT='Name <address@domain>' BUILD-FOLDER\n")
endif()
# Without dpkg-shlibdeps cpack would make a package that depends on nothing.
foreach(tool IN ITEMS dpkg-shlibdeps file dpkg-deb gzip strip)
  find_program(found_${tool} ${tool})
  if(NOT found_${tool})
    message(FATAL_ERROR "The package cannot be made without ${tool}: scripts/setup package\n")
  endif()
endforeach()

# The time makes each build newer than the last one, wherever the sources are from.
# SOURCE_DATE_EPOCH stands for it when it is set.
string(TIMESTAMP release "%Y%m%d.%H%M%S" UTC)
string(TIMESTAMP OV_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${release})
