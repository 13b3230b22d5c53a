# How tests are handed to ctest, which ends one that hangs, and all that it has started, after two
# minutes, unless its properties say otherwise.
include(GoogleTest)

# command_test(NAME COMMAND...): a command becomes one of ctest's tests.
function(command_test name)
    add_test(NAME ${name} COMMAND ${ARGN})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120)
endfunction()

# discover_tests(NAME ARGUMENTS...): every test in a GoogleTest program becomes one of ctest's, with
# the further arguments of gtest_discover_tests(), PROPERTIES last. They are asked for when ctest
# runs, which on a busy machine takes more than the five seconds that it has by default. Parameters
# are known by their names, since their bytes would differ from run to run.
function(discover_tests name)
    set(arguments ${ARGN})
    if(NOT TIMEOUT IN_LIST arguments)
        if(NOT PROPERTIES IN_LIST arguments)
            list(APPEND arguments PROPERTIES)
        endif()
        list(APPEND arguments TIMEOUT 120)
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                         NO_PRETTY_VALUES ${arguments})
endfunction()
