# Cross-builds the library for macOS on Linux, for the architecture MIRROR_MACOS_ARCH, with what
# scripts/macos-sdk made. A Mac needs none of this.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 20) # macOS 11
set(CMAKE_SYSTEM_PROCESSOR ${MIRROR_MACOS_ARCH})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MIRROR_MACOS_ARCH)

get_filename_component(macosSdk ${CMAKE_CURRENT_LIST_DIR}/../../build/macos-sdk ABSOLUTE)
set(CMAKE_OSX_SYSROOT ${macosSdk}/sdk)
set(CMAKE_OSX_DEPLOYMENT_TARGET 11.0)
set(RAPIDJSON_INCLUDE_DIR ${macosSdk}/rapidjson)
# What the programs are linked with is found here, and nothing of this machine is.
set(programLibraries ${macosSdk}/programs/${MIRROR_MACOS_ARCH})
list(APPEND CMAKE_FIND_ROOT_PATH ${programLibraries})
foreach(what LIBRARY INCLUDE PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${what} ONLY)
endforeach()
set(ENV{PKG_CONFIG_LIBDIR} ${programLibraries}/lib/pkgconfig)

set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET ${MIRROR_MACOS_ARCH}-apple-macos)
set(CMAKE_CXX_COMPILER_TARGET ${MIRROR_MACOS_ARCH}-apple-macos)
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19)

# Never a libc++ that happens to be installed for Linux. Assertions carry no path of this machine.
set(CMAKE_CXX_FLAGS_INIT "-stdlib++-isystem ${CMAKE_OSX_SYSROOT}/usr/include/c++/v1 \
-ffile-prefix-map=${RAPIDJSON_INCLUDE_DIR}/=")
# The debug map would name the files of this machine.
foreach(kind SHARED EXE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,-S")
endforeach()

# What is built is what is shipped.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)

# What CMake tries out needs more than the stubs list.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
