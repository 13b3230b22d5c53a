# Debian packages of the installed files: run `cpack` in the build folder. As in a distribution,
# there are packages for the library, the development files, the programs and the manual.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME screen-mirror)
set(CPACK_PACKAGE_VENDOR "the screen mirror authors")
set(CPACK_PACKAGE_CONTACT "The screen mirror authors <screen-mirror@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_NAME} built using CMake") # each has its own
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Runtime Development Manual)
if(MIRROR_TOOLS)
    list(APPEND CPACK_COMPONENTS_ALL Programs)
endif()

# As in cmake/debian/changelog. A distribution's revisions start at 1 and so count as newer.
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION}-0.1)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Compresses files and adds the copyright and the changelog, as Debian's policy requires.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/finish.cmake)
set(CPACK_MIRROR_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_MIRROR_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set(CPACK_MIRROR_SHLIBDEPS dpkg-shlibdeps)
if(CMAKE_CROSSCOMPILING)
    # cpack then runs in scripts/emulate-arm64, where the libraries are.
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
    set(CPACK_MIRROR_SHLIBDEPS ${CMAKE_COMMAND} -E env DEB_HOST_ARCH=arm64
        dpkg-shlibdeps --admindir=${CMAKE_SYSROOT}/dpkg)
endif()

# debian_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION): sets the fields of one package.
macro(debian_package component name section summary description)
    set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${component}_DESCRIPTION "${summary}\n${description}")
endmacro()

string(TOLOWER ${PROJECT_NAME} libraryPackage)
set(thisLibrary lib${libraryPackage}${PROJECT_VERSION_MAJOR})
debian_package(RUNTIME ${thisLibrary} libs
    "mirrors a display onto networked lights (library)"
"The library receives frames from an X server or a Wayland compositor, derives
a colour for every panel of every light device in its configuration, and sends
each device a datagram a frame.")
debian_package(DEVELOPMENT lib${libraryPackage}-dev libdevel
    "mirrors a display onto networked lights (development files)"
"The library receives frames from an X server or a Wayland compositor, derives
a colour for every panel of every light device in its configuration, and sends
each device a datagram a frame.
.
This package has its header, and what CMake and pkg-config know it by.")
debian_package(PROGRAMS screen-mirror utils
    "mirrors a display onto networked lights (programs)"
"mirrorctl mirrors a display from the command line, makes and checks
configurations, and finds out why nothing is mirrored. panelwall is light
devices in software, shown in the terminal or in a browser. lightbridge drives
lights that understand DDP, E1.31, Art-Net or WLED realtime.")
debian_package(MANUAL screen-mirror-doc doc
    "mirrors a display onto networked lights (manual)"
"The manual of the screen mirroring library and of its programs mirrorctl,
panelwall and lightbridge: configurations, modes, datagrams, recordings,
performance and security; and whole hosts to start from in C, C++, Python and
JavaScript.")

# shlibs gives the dependency of packages built against the library; the trigger runs ldconfig.
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs
     "lib${PROJECT_NAME} ${PROJECT_VERSION_MAJOR} ${thisLibrary} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)

# finish.cmake adds the libraries that are linked. This one is loaded in Wayland sessions only.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "libwayland-client0 (>= 1.20)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${thisLibrary} (= ${CPACK_DEBIAN_PACKAGE_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS screen-mirror-doc)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_DEPENDS "${thisLibrary} (= ${CPACK_DEBIAN_PACKAGE_VERSION})")
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SUGGESTS screen-mirror-doc)
set(CPACK_DEBIAN_MANUAL_PACKAGE_ARCHITECTURE all)
include(CPack)
