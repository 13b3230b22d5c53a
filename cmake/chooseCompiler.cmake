# Included before project(). The sources need a compiler with blocks, which Debian's default
# compiler lacks. If the user has not chosen a compiler, this chooses clang. macOS uses clang by
# default.
if(NOT DEFINED PROJECT_NAME AND NOT CMAKE_HOST_APPLE AND NOT CMAKE_TOOLCHAIN_FILE
   AND NOT CMAKE_C_COMPILER AND NOT CMAKE_CXX_COMPILER AND "$ENV{CMAKE_TOOLCHAIN_FILE}" STREQUAL ""
   AND "$ENV{CC}" STREQUAL "" AND "$ENV{CXX}" STREQUAL "")
    find_program(MIRROR_CLANG clang)
    find_program(MIRROR_CLANGXX clang++)
    mark_as_advanced(MIRROR_CLANG MIRROR_CLANGXX)
    if(MIRROR_CLANG AND MIRROR_CLANGXX)
        set(CMAKE_C_COMPILER ${MIRROR_CLANG})
        set(CMAKE_CXX_COMPILER ${MIRROR_CLANGXX})
    endif()
endif()
