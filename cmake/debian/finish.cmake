# Run by cpack on the files of the Debian packages before it builds the packages: does what Debian's
# policy requires and other installations do not need.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr)
    set(doc ${root}/share/doc/${package})

    # Each package has its own copyright file, which names all licences.
    file(REMOVE ${root}/share/doc/screen-mirror/LICENSE ${root}/share/doc/screen-mirror/copyright)
    if(NOT component STREQUAL Manual)
        file(GLOB left ${root}/share/doc/screen-mirror/*)
        if(NOT left)
            file(REMOVE_RECURSE ${root}/share/doc)
        endif()
    endif()
    file(COPY ${CPACK_MIRROR_SOURCE}/copyright DESTINATION ${doc}
         FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    file(COPY_FILE ${CPACK_MIRROR_SOURCE}/cmake/debian/changelog ${doc}/changelog.Debian)
    file(COPY_FILE ${CPACK_MIRROR_SOURCE}/CHANGELOG.md ${doc}/changelog)
    file(CHMOD ${doc}/changelog ${doc}/changelog.Debian
         PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

    file(GLOB manuals ${root}/share/man/man1/*.1)
    execute_process(COMMAND gzip -9n ${manuals} ${doc}/changelog ${doc}/changelog.Debian
                    COMMAND_ERROR_IS_FATAL ANY)

    # The dynamic linker finds the library without a run-time path.
    file(GLOB programs ${root}/bin/*)
    foreach(program IN LISTS programs)
        file(RPATH_REMOVE FILE ${program})
    endforeach()

    # The Debian packages of the libraries that the programs and the library load. CPack's own
    # search would add scripts that call ldconfig, for which Debian uses a trigger.
    file(GLOB libraries ${root}/${CPACK_MIRROR_LIBDIR}/*.so.*.*)
    if(programs OR libraries)
        set(work ${CPACK_TEMPORARY_DIRECTORY}/../shlibdeps)
        file(WRITE ${work}/debian/control "Source: screen-mirror\n\nPackage: ${package}\nArchitecture: any\n")
        execute_process(COMMAND ${CPACK_MIRROR_SHLIBDEPS} -O --ignore-missing-info
                                -l${CPACK_TEMPORARY_INSTALL_DIRECTORY}/Runtime/usr/${CPACK_MIRROR_LIBDIR}
                                ${programs} ${libraries}
                        WORKING_DIRECTORY ${work} OUTPUT_VARIABLE loaded
                        COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX REPLACE "^shlibs:Depends=|\n" "" loaded "${loaded}")
        set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS
            ${CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS} ${loaded})
        list(JOIN CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS ", " CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS)
    endif()
endforeach()
