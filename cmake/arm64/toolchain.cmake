# Builds for Linux on arm64, on x86-64, with what scripts/arm64-sysroot made.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
get_filename_component(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../../build/arm64-sysroot ABSOLUTE)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
# Found through the link lib, the C++ headers would have names that Ninja cannot follow.
set(CMAKE_C_COMPILER_EXTERNAL_TOOLCHAIN ${CMAKE_SYSROOT}/usr)
set(CMAKE_CXX_COMPILER_EXTERNAL_TOOLCHAIN ${CMAKE_SYSROOT}/usr)

# Of this machine are only the programs that the build runs.
foreach(what LIBRARY INCLUDE PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${what} ONLY)
endforeach()
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR}
    ${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)

# ccache can shorten the paths of the headers' folders, which CMake reads from the compiler's output.
set(ENV{CCACHE_DISABLE} 1)
