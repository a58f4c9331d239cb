# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

# The pairs of tests/support/redirected.syms without its comments and blank lines, which not every objcopy reads.
set(redirected_source ${PROJECT_SOURCE_DIR}/tests/support/redirected.syms)
set(redirected_names ${PROJECT_BINARY_DIR}/redirected/names)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${redirected_source})
file(STRINGS ${redirected_source} pairs REGEX "^[A-Za-z_]")
list(JOIN pairs "\n" pairs)
file(CONFIGURE OUTPUT ${redirected_names} CONTENT "${pairs}\n" @ONLY)

# add_redirected_library(<library>)
#
# Makes <library>_redirected: a copy of the static library, object for object as it ships, whose references to the calls
# listed in tests/support/redirected.syms lead to the fakes of tests/support. Unlike the linker's --wrap this works with
# every linker and for every name that a C library gives a call. The libraries it links are redirected as well.
function(add_redirected_library library)
    set(copy ${library}_redirected)
    if(TARGET ${copy})
        return()
    endif()

    set(archive ${PROJECT_BINARY_DIR}/redirected/lib${library}.a)
    add_custom_command(OUTPUT ${archive}
        COMMAND ${CMAKE_OBJCOPY} --redefine-syms=${redirected_names} $<TARGET_FILE:${library}> ${archive}
        DEPENDS ${library} ${redirected_names}
        COMMENT "Redirecting the system calls of ${library}"
        VERBATIM)
    add_custom_target(${copy}_archive DEPENDS ${archive})

    add_library(${copy} STATIC IMPORTED GLOBAL)
    add_dependencies(${copy} ${copy}_archive)
    set_target_properties(${copy} PROPERTIES IMPORTED_LOCATION ${archive})
    target_include_directories(${copy} INTERFACE
        $<TARGET_GENEX_EVAL:${library},$<TARGET_PROPERTY:${library},INTERFACE_INCLUDE_DIRECTORIES>>)

    get_target_property(links ${library} INTERFACE_LINK_LIBRARIES)
    if(links)
        redirect_links(${links})
        target_link_libraries(${copy} INTERFACE ${redirected_links})
    endif()
    target_link_libraries(${copy} INTERFACE test_support)
endfunction()

# redirect_links(<library>...) -> redirected_links: static libraries of this tree become their copies, others stay, and
# so do the tests' own (test_...), which are what the copies lead to.
function(redirect_links)
    set(redirected_links)
    foreach(link IN LISTS ARGN)
        string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" link "${link}")
        if(TARGET ${link})
            get_target_property(imported ${link} IMPORTED)
            get_target_property(type ${link} TYPE)
            if(NOT imported AND type STREQUAL "STATIC_LIBRARY" AND NOT link MATCHES "^test_")
                add_redirected_library(${link})
                set(link ${link}_redirected)
            endif()
        endif()
        list(APPEND redirected_links ${link})
    endforeach()
    set(redirected_links ${redirected_links} PARENT_SCOPE)
endfunction()
