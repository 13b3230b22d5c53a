# The installation folders, below the prefix.
#
# On Debian, libraries go to the same folder as Debian's own, whatever the prefix.
if(PROJECT_IS_TOP_LEVEL AND EXISTS /etc/debian_version AND CMAKE_LIBRARY_ARCHITECTURE
   AND NOT APPLE)
    set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Libraries")
endif()
set(CMAKE_INSTALL_DOCDIR share/doc/screen-mirror CACHE PATH "The manual")
include(GNUInstallDirs)
