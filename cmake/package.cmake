# A Debian package with everything that is installed: `cpack` in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME screen-mirror)
set(CPACK_PACKAGE_VENDOR "Screen mirror")
set(CPACK_PACKAGE_CONTACT "Screen mirror <screen-mirror@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"A library for host applications, in plain C, and two programs: mirrorctl
mirrors a display from the command line, panelwall is light devices in
software, shown in the terminal or in a browser.")
# What the programs and the library load, as Debian's own packages name it; the library tells the
# same to packages built against it, and is made known to the loader.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
include(CPack)
