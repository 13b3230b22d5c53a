# What `cmake --install` puts where. The tree may be moved afterwards: nothing in it names the place
# where it was built or installed.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

if(MIRROR_TOOLS)
    # One of the two links the library, and finds it by where it stands itself.
    set(there ${CMAKE_INSTALL_LIBDIR})
    if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} AND NOT IS_ABSOLUTE ${CMAKE_INSTALL_BINDIR})
        file(RELATIVE_PATH there /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
        string(PREPEND there $<IF:$<PLATFORM_ID:Darwin>,@loader_path,$ORIGIN>/)
    endif()
    set_target_properties(mirrorctl PROPERTIES INSTALL_RPATH ${there})
    install(TARGETS mirrorctl panelwall)
    install(FILES docs/man/mirrorctl.1 docs/man/panelwall.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    # Debian's zsh looks elsewhere for what packages bring.
    install(CODE [[
        set(zshFolder site-functions)
        if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND EXISTS "/etc/debian_version")
            set(zshFolder vendor-completions)
        endif()]])
    install(FILES tools/completions/_mirrorctl tools/completions/_panelwall
            DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/\${zshFolder}")
    foreach(program mirrorctl panelwall)
        install(FILES tools/completions/${program}.bash RENAME ${program}
                DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    endforeach()
endif()

install(TARGETS screenMirrorMac EXPORT screenMirrorMac
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES mirror/mirrorInterface.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mirror)
install(FILES docs/mirror-config.schema.json
        DESTINATION ${CMAKE_INSTALL_DATADIR}/screenMirrorMac)
# The pages that the header refers to.
install(FILES docs/configuration.md docs/datagrams.md docs/modes.md docs/mirror-config.schema.json
        docs/other-languages.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/modes DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
        PATTERN CMakeLists.txt EXCLUDE
        PATTERN readmeExample EXCLUDE
        PATTERN node_modules EXCLUDE
        PATTERN __pycache__ EXCLUDE)

# find_package(screenMirrorMac) brings the target screenMirrorMac::screenMirrorMac.
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/screenMirrorMac)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/screenMirrorMacConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(EXPORT screenMirrorMac FILE screenMirrorMacConfig.cmake NAMESPACE screenMirrorMac::
        DESTINATION ${packageFolder})
install(FILES ${CMAKE_BINARY_DIR}/screenMirrorMacConfigVersion.cmake DESTINATION ${packageFolder})

# A folder that is absolute stays so; any other lies below the prefix, wherever that is.
set(pcLibdir "\${prefix}")
cmake_path(APPEND pcLibdir ${CMAKE_INSTALL_LIBDIR})
set(pcIncludedir "\${prefix}")
cmake_path(APPEND pcIncludedir ${CMAKE_INSTALL_INCLUDEDIR})
set(pcPrefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    file(RELATIVE_PATH pcPrefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" pcPrefix "\${pcfiledir}/${pcPrefix}")
endif()
configure_file(cmake/screenMirrorMac.pc.in screenMirrorMac.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/screenMirrorMac.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
