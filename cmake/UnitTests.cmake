# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

include(GoogleTest)

find_package(GTest REQUIRED)

# Five times as fast from nothing, and what a preset for CI wants; slower after a change to one of the files.
option(TARVELD_UNITY_TESTS "Compile the files of a test program as one" OFF)

# add_unit_tests(<name> [UNREDIRECTED] SOURCES <file>... [LINK <library>...])
#
# Makes the program unit_<name> and one ctest case of each test in it. The libraries are linked as their redirected
# copies, and so is all that they need; UNREDIRECTED is for programs that could do no harm anyway.
function(add_unit_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "UNREDIRECTED" "" "SOURCES;LINK")
    set(program unit_${name})
    set(libraries ${arg_LINK})
    if(NOT arg_UNREDIRECTED)
        redirect_links(${arg_LINK})
        set(libraries ${redirected_links} test_support)
    endif()
    add_executable(${program} ${arg_SOURCES})
    target_link_libraries(${program} PRIVATE ${libraries} GTest::gtest_main)
    set_target_properties(${program} PROPERTIES UNITY_BUILD ${TARVELD_UNITY_TESTS} UNITY_BUILD_BATCH_SIZE 0)
    # Every file has its own anonymous namespace, which gcc takes for a header's when the file is included.
    if(TARVELD_UNITY_TESTS AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(${program} PRIVATE -Wno-subobject-linkage)
    endif()
    # The code under test is compiled as its preset says. The tests' own code need not be fast, and optimising it takes
    # several times as long as all the rest.
    if(NOT CMAKE_CROSSCOMPILING)
        target_compile_options(${program} PRIVATE -O0 -U_FORTIFY_SOURCE)
    endif()
    # Under an emulator, or with sanitizers, listing the tests can take its time.
    gtest_discover_tests(${program} TEST_PREFIX "${name}: " DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 60)
    set_property(GLOBAL APPEND PROPERTY TARVELD_TEST_PROGRAMS ${program})
endfunction()

# add_system_reach_check([EXCEPT <program>...])
#
# Proves with nm that no test program, except the named ones, can reach the calls that would change this machine.
function(add_system_reach_check)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "" "EXCEPT")
    # A sanitizer's runtime contains such calls itself, to watch them; the other builds have the same objects of ours.
    if(TARVELD_IS_SANITIZED)
        return()
    endif()
    get_property(programs GLOBAL PROPERTY TARVELD_TEST_PROGRAMS)
    list(REMOVE_ITEM programs ${arg_EXCEPT})
    list(TRANSFORM programs REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE files)
    add_test(NAME "tests cannot reach the machine's clock, shell and log"
        COMMAND ${PROJECT_SOURCE_DIR}/tools/check_system_reach ${CMAKE_NM} ${files})
endfunction()
