# gputune_discover_tests(<target> [arguments of gtest_discover_tests...])
#
# Makes every GoogleTest case of the target a CTest test of its own: it runs in a process of its own (under Wine for
# Windows programs), in an empty working directory of its own that is removed when the test passes, and for a minute at
# most. Labels and other properties are given as to gtest_discover_tests, PROPERTIES last.
include(GoogleTest)

function(gputune_discover_tests target)
    # The emulator runs what is listed before the program's path, so it is the place for the directory, too.
    get_target_property(emulator ${target} CROSSCOMPILING_EMULATOR)
    if(NOT emulator)
        set(emulator "")
    endif()
    set_property(TARGET ${target} PROPERTY CROSSCOMPILING_EMULATOR
        "${PROJECT_SOURCE_DIR}/scripts/gtest-case" ${emulator})

    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "PROPERTIES")
    # Before the tests run instead of after the build: building then needs no Wine.
    gtest_discover_tests(${target}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        ${arg_UNPARSED_ARGUMENTS}
        PROPERTIES TIMEOUT 60 ${arg_PROPERTIES})
endfunction()

# gputune_compile_quickly(<target>)  Tests are read by the compiler far more often than they run: no optimisation, and
#                                    GoogleTest's headers parsed once.
function(gputune_compile_quickly target)
    target_compile_options(${target} PRIVATE -O0 -g1)
    target_precompile_headers(${target} PRIVATE <gtest/gtest.h> <string> <vector>)
endfunction()

# gputune_release_tests(<test>...)  Tests that guard a release and not every checkout: ./test leaves them out, ./test --all
#                                   runs them.
function(gputune_release_tests)
    set_property(TEST ${ARGN} APPEND PROPERTY LABELS release)
endfunction()
# The programs that only those tests need.
add_custom_target(release_tests)
function(gputune_release_programs)
    set_target_properties(${ARGN} PROPERTIES EXCLUDE_FROM_ALL ON)
    add_dependencies(release_tests ${ARGN})
endfunction()
