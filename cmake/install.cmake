# What `cmake --install` installs, and where. The installed tree can be moved: nothing in it names
# the folder where it was built or installed. The components are Runtime (needed to run a host),
# Development (needed to build one), Programs and Manual.

include(CMakePackageConfigHelpers)

if(MIRROR_TOOLS)
    # Only mirrorctl links the library. It finds the library relative to its own folder.
    set(there ${CMAKE_INSTALL_LIBDIR})
    if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} AND NOT IS_ABSOLUTE ${CMAKE_INSTALL_BINDIR})
        file(RELATIVE_PATH there /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
        string(PREPEND there $<IF:$<PLATFORM_ID:Darwin>,@loader_path,$ORIGIN>/)
    endif()
    set_target_properties(mirrorctl PROPERTIES INSTALL_RPATH ${there})
    set(programs lightbridge mirrorctl panelwall)
    install(TARGETS ${programs} COMPONENT Programs)
    # Debian's zsh looks for the completions of packages in another folder.
    install(CODE [[
        set(zshFolder site-functions)
        if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND EXISTS "/etc/debian_version")
            set(zshFolder vendor-completions)
        endif()]] COMPONENT Programs)
    foreach(program ${programs})
        install(FILES docs/man/${program}.1
                DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Programs)
        install(FILES tools/completions/_${program}
                DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/\${zshFolder}" COMPONENT Programs)
        install(FILES tools/completions/${program}.bash RENAME ${program}
                DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
                COMPONENT Programs)
    endforeach()
endif()

install(TARGETS screenMirrorMac EXPORT screenMirrorMac
        LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES mirror/mirrorInterface.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mirror
        COMPONENT Development)
install(FILES docs/mirror-config.schema.json
        DESTINATION ${CMAKE_INSTALL_DATADIR}/screenMirrorMac COMPONENT Programs)

# The manual keeps the source tree's layout, so that links between its pages work.
install(FILES LICENSE copyright DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Runtime)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Manual
        FILES_MATCHING PATTERN "*.png" PATTERN "*.svg" PATTERN "*.json" PATTERN man EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Manual
        PATTERN CMakeLists.txt EXCLUDE
        PATTERN readmeExample EXCLUDE
        PATTERN node_modules EXCLUDE
        PATTERN __pycache__ EXCLUDE)
install(CODE "
    set(SOURCE [==[${PROJECT_SOURCE_DIR}]==])
    set(DOCDIR [==[${CMAKE_INSTALL_DOCDIR}]==])" COMPONENT Manual)
install(SCRIPT cmake/installPages.cmake COMPONENT Manual)

# find_package(screenMirrorMac) defines the target screenMirrorMac::screenMirrorMac.
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/screenMirrorMac)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/screenMirrorMacConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(EXPORT screenMirrorMac FILE screenMirrorMacConfig.cmake NAMESPACE screenMirrorMac::
        DESTINATION ${packageFolder} COMPONENT Development)
install(FILES ${PROJECT_BINARY_DIR}/screenMirrorMacConfigVersion.cmake DESTINATION ${packageFolder}
        COMPONENT Development)

# Absolute folders are kept; relative ones are below the prefix.
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
install(FILES ${PROJECT_BINARY_DIR}/screenMirrorMac.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

if(PROJECT_IS_TOP_LEVEL)
    add_custom_target(uninstall VERBATIM
        COMMAND ${CMAKE_COMMAND} "-DBUILD=${PROJECT_BINARY_DIR}"
                -P ${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake)
endif()
