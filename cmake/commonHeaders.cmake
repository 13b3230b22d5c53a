# common_headers(NAME GTEST): a target that precompiles the headers that most tests include, for
# test programs to reuse. GTEST is the GoogleTest target.
function(common_headers name gtest)
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_precompile_headers(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/commonHeaders.h)
    target_link_libraries(${name} PRIVATE ${gtest})
    # Test programs are compiled with these settings too.
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${name} PRIVATE -fPIE)
endfunction()
