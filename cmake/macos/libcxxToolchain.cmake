# Builds Linux programs against the C++ library that a Mac has too: LLVM's, with LLVM's unwinder, as
# scripts/macos-sdk unpacked them. What such a program loads finds them by its RPATH.
get_filename_component(libcxx ${CMAKE_CURRENT_LIST_DIR}/../../build/macos-sdk/libcxx ABSOLUTE)

set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_FLAGS_INIT "-stdlib++-isystem ${libcxx}/include/c++/v1")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT
        "--start-no-unused-arguments -stdlib=libc++ --end-no-unused-arguments -fuse-ld=lld \
-L${libcxx}/lib -Wl,-rpath,${libcxx}/lib -Wl,--disable-new-dtags")
endforeach()
