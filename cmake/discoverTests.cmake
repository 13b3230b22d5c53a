include(GoogleTest)

# discover_tests(NAME ARGUMENTS...): every test in a GoogleTest program becomes one of ctest's, with
# the further arguments of gtest_discover_tests(), PROPERTIES last. They are asked for when ctest
# runs, which on a busy machine takes more than the five seconds that it has by default. A test that
# hangs is ended after two minutes, unless the properties say otherwise.
function(discover_tests name)
    set(arguments ${ARGN})
    if(NOT TIMEOUT IN_LIST arguments)
        if(NOT PROPERTIES IN_LIST arguments)
            list(APPEND arguments PROPERTIES)
        endif()
        list(APPEND arguments TIMEOUT 120)
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 ${arguments})
endfunction()
