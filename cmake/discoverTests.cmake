# Registers tests with ctest. After two minutes, or the TIMEOUT among a test's properties, ctest
# ends the test and all processes that it has started. An emulated processor gets ten times as long.
include(GoogleTest)
set(tenfold "")
if(CMAKE_CROSSCOMPILING)
    set(tenfold 0) # the digit that makes it so
endif()

# command_test(NAME COMMAND...): registers a command as a test.
function(command_test name)
    add_test(NAME ${name} COMMAND ${ARGN})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120${tenfold})
endfunction()

# discover_tests(NAME ARGUMENTS...): registers every test of a GoogleTest program. ARGUMENTS go to
# gtest_discover_tests(), PROPERTIES last. The tests are listed when ctest runs, which on a busy
# machine takes longer than the default limit of five seconds. Parameters appear by name, not by
# value, since the bytes of a value differ from run to run.
function(discover_tests name)
    set(arguments ${ARGN})
    if(NOT TIMEOUT IN_LIST arguments)
        if(NOT PROPERTIES IN_LIST arguments)
            list(APPEND arguments PROPERTIES)
        endif()
        list(APPEND arguments TIMEOUT 120)
    endif()
    string(REGEX REPLACE "(TIMEOUT;[0-9]+)" "\\1${tenfold}" arguments "${arguments}")
    # The session that the tests are started in is not the one that they test.
    list(APPEND arguments ENVIRONMENT_MODIFICATION WAYLAND_DISPLAY=unset:)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60${tenfold}
                         NO_PRETTY_VALUES ${arguments})
endfunction()

# discover_wayland_tests(NAME FILTER ARGUMENTS...): registers those tests of a GoogleTest program that
# FILTER selects under the prefix "wayland.", to run on a Wayland compositor. Call it after
# discover_tests(): unless the program's tests have a lock, a test is not run on both at the same
# time, since it uses the same addresses.
function(discover_wayland_tests name filter)
    set(arguments ${ARGN})
    if(NOT PROPERTIES IN_LIST arguments)
        list(APPEND arguments PROPERTIES)
    endif()
    discover_tests(${name} TEST_PREFIX wayland. TEST_FILTER ${filter} TEST_LIST ${name}Wayland
                   ${arguments} ENVIRONMENT MIRROR_TEST_SERVER=sway)
    if(NOT RESOURCE_LOCK IN_LIST arguments)
        file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}Locks.cmake "
            foreach(test IN LISTS ${name}Wayland)
                string(REGEX REPLACE \"^wayland[.]\" \"\" other \"\${test}\")
                set_tests_properties(\"\${test}\" \"\${other}\" PROPERTIES RESOURCE_LOCK \"\${other}\")
            endforeach()")
        set_property(DIRECTORY APPEND PROPERTY
                     TEST_INCLUDE_FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}Locks.cmake)
    endif()
endfunction()
