# Read by cpack. Whoever makes the packages maintains them; the variables are those of Debian's own tools, and so is
# the address without them.
set(name "ko-filesystem packager")
if(DEFINED ENV{DEBFULLNAME})
    set(name "$ENV{DEBFULLNAME}")
endif()
if(DEFINED ENV{DEBEMAIL})
    set(address "$ENV{DEBEMAIL}")
else()
    cmake_host_system_information(RESULT host QUERY FQDN)
    set(address "packager@${host}")
endif()
set(CPACK_PACKAGE_CONTACT "${name} <${address}>")
