# What every target is compiled with.
set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# The JSON library's assertions belong to the product, so release builds define no NDEBUG.
set(CMAKE_C_FLAGS_RELEASE "-O2 -g1")
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -g1")

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release)
endif()

# Panels see exact integers: the compiler may not fuse a multiplication with an addition.
add_compile_options(-ffp-contract=off -Wall -Wextra -Wshadow)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fblocks>)
# A table of all pairs of channels is calculated while compiling.
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fconstexpr-steps=4000000>)
include_directories(${CMAKE_SOURCE_DIR})

# Guarded members are held against the locks of a C++ library that tells what they do.
if(APPLE)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wthread-safety>)
    add_compile_definitions(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
endif()

if(MIRROR_SANITIZER)
    # Hosts in C bring no C++ runtime of the sanitizer, which only these two checks would need.
    add_compile_options(-fsanitize=${MIRROR_SANITIZER} -fno-sanitize=vptr,function
                        -fno-sanitize-recover=undefined -fno-omit-frame-pointer -O1 -g1)
    add_compile_options(-fsanitize-ignorelist=${CMAKE_SOURCE_DIR}/tests/sanitizers/ignorelist.txt)
    add_link_options(-fsanitize=${MIRROR_SANITIZER})
endif()

# Every source tells the fuzzer where its inputs led.
if(MIRROR_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link -O2)
endif()
if(MIRROR_COVERAGE)
    add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
    add_link_options(-fprofile-instr-generate)
endif()
