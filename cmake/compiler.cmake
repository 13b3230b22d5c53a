# Compiler settings for every target here. They do not affect a project that includes this
# one as a subfolder.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fblocks MIRROR_HAS_BLOCKS)
if(NOT MIRROR_HAS_BLOCKS)
    message(FATAL_ERROR "${CMAKE_CXX_COMPILER} has no blocks (-fblocks), which these sources use; "
        "install clang (Debian: apt-get install clang) and type:\n"
        "  cmake --fresh -S \"${CMAKE_HOME_DIRECTORY}\" -B \"${CMAKE_BINARY_DIR}\" "
        "-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++\n")
endif()

set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(PROJECT_IS_TOP_LEVEL)
    get_property(isMultiConfig GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
    if(NOT CMAKE_BUILD_TYPE AND NOT isMultiConfig)
        set(CMAKE_BUILD_TYPE Release)
    endif()
    # Only if the user has not changed CMake's default flags.
    foreach(language C CXX)
        if(CMAKE_${language}_FLAGS_RELEASE STREQUAL "-O3 -DNDEBUG")
            set(CMAKE_${language}_FLAGS_RELEASE "-O2 -g1")
        endif()
    endforeach()
endif()

# The JSON library's assertions are part of the product in every build type.
add_compile_options(-UNDEBUG)
# Panels must receive exact integers: the compiler may not fuse a multiplication and an addition.
add_compile_options(-ffp-contract=off -Wall -Wextra -Wshadow)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fblocks>)
# A table of all pairs of channels is computed at compile time.
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fconstexpr-steps=4000000>)
include_directories(${PROJECT_SOURCE_DIR})

# Properties of sources that parse arguments: the parser's templates run once, and optimising them
# takes longer than compiling them.
set(argumentParsing COMPILE_FLAGS "-O0 -U_FORTIFY_SOURCE")

# Thread-safety analysis needs a C++ library whose locks are annotated.
if(APPLE)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>)
    add_compile_definitions(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
    # A file holds what is used and names no more than what is exported; its map tells the rest.
    add_link_options(-Wl,-dead_strip -Wl,-dead_strip_dylibs -Wl,-x
        "-Wl,-map,${PROJECT_BINARY_DIR}/$<TARGET_PROPERTY:NAME>.map")
    # CMake knows of it only on a Mac.
    foreach(kind SHARED_LIBRARY_RUNTIME_C SHARED_LIBRARY_RUNTIME_CXX EXECUTABLE_RUNTIME_CXX)
        set(CMAKE_${kind}_FLAG -Wl,-rpath,)
    endforeach()
endif()

if(MIRROR_SANITIZER)
    # Only these two checks need the sanitizer's C++ runtime, which hosts in C do not link.
    add_compile_options(-fsanitize=${MIRROR_SANITIZER} -fno-sanitize=vptr,function
                        -fno-sanitize-recover=undefined -fno-omit-frame-pointer -O1 -g1)
    add_compile_options(-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/tests/sanitizers/ignorelist.txt)
    add_link_options(-fsanitize=${MIRROR_SANITIZER})
endif()

# Every source reports its coverage to the fuzzer.
if(MIRROR_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link -O2)
endif()
if(MIRROR_COVERAGE)
    add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
    add_link_options(-fprofile-instr-generate)
endif()
