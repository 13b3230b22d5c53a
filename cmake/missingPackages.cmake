# Included before project(); runs until one configuration has succeeded. Lists all missing Debian
# packages; a failed search would name only one file of one package.
find_program(MIRROR_DPKG_QUERY dpkg-query)
mark_as_advanced(MIRROR_DPKG_QUERY)
if(MIRROR_DPKG_QUERY AND NOT DEFINED PROJECT_NAME AND NOT MIRROR_CONFIGURED)
    execute_process(COMMAND sh -c ". scripts/packages.sh; missing $build_packages"
                    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} OUTPUT_VARIABLE missing)
    if(missing)
        message(NOTICE "Of the packages that the build may need, these are missing:\n"
                       "  apt-get install${missing}\n")
    endif()
endif()
