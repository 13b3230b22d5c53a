# Code for Wayland protocols, generated from their descriptions.
find_package(PkgConfig REQUIRED)
find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
mark_as_advanced(WAYLAND_SCANNER)
pkg_check_modules(WAYLAND_CLIENT REQUIRED wayland-client>=1.20)
pkg_get_variable(waylandFolder wayland-client pkgdatadir)
pkg_get_variable(protocolsFolder wayland-protocols pkgdatadir)
pkg_get_variable(wlrFolder wlr-protocols pkgdatadir)
# Debian has the descriptions of wlr's protocols in a package for another language.
file(GLOB wlrFolders /usr/share/cargo/registry/wayland-protocols-*/wlr-protocols)
set(waylandDescriptions ${waylandFolder} ${protocolsFolder} ${wlrFolder} ${wlrFolders})
# Where one begins with two slashes, CMake's cache makes them one, and what was generated would be
# generated again after the next configuration.
list(TRANSFORM waylandDescriptions REPLACE "^//" "/")

# wayland_protocols(LIBRARY SIDE FILES...): a static library of these protocols for the SIDE client or
# server. Its headers are included as "protocols/...".
function(wayland_protocols library side)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${library})
    file(MAKE_DIRECTORY ${folder}/protocols)
    foreach(file IN LISTS ARGN)
        get_filename_component(name ${file} NAME_WE)
        find_file(WAYLAND_DESCRIPTION_${name} ${file} PATHS ${waylandDescriptions}
                  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
        mark_as_advanced(WAYLAND_DESCRIPTION_${name})
        set(description ${WAYLAND_DESCRIPTION_${name}})
        set(header ${folder}/protocols/${name}-${side}-protocol.h)
        set(tables ${folder}/${name}.c)
        add_custom_command(OUTPUT ${header} DEPENDS ${description} VERBATIM
            COMMAND ${WAYLAND_SCANNER} ${side}-header ${description} ${header})
        add_custom_command(OUTPUT ${tables} DEPENDS ${description} VERBATIM
            COMMAND ${WAYLAND_SCANNER} private-code ${description} ${tables})
        list(APPEND generated ${header} ${tables})
    endforeach()
    add_library(${library} STATIC ${generated})
    target_include_directories(${library} SYSTEM PUBLIC ${folder} ${WAYLAND_CLIENT_INCLUDE_DIRS})
endfunction()
