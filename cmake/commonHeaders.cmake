# common_headers(NAME GTEST): a target that reads the headers which most tests read, over the target
# GTEST, for the test programs to reuse.
function(common_headers name gtest)
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    target_precompile_headers(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/commonHeaders.h)
    target_link_libraries(${name} PRIVATE ${gtest})
    # As programs are compiled.
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${name} PRIVATE -fPIE)
endfunction()
