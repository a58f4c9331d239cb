# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

find_program(SCDOC scdoc DOC "Makes manual pages; without it there are none")

# manual_page(<name>.<section> <folder> <component>)
#
# Makes the page from <name>.<section>.scd in the folder and installs it with that component, where scdoc is at hand.
function(manual_page page folder component)
    if(NOT SCDOC)
        return()
    endif()
    set(source ${folder}/${page}.scd)
    set(made ${CMAKE_CURRENT_BINARY_DIR}/${page})
    string(REGEX REPLACE ".*\\." "" section ${page})
    add_custom_command(
        OUTPUT ${made}
        COMMAND ${SCDOC} < ${source} > ${made}
        DEPENDS ${source}
        VERBATIM)
    add_custom_target(manual_${page} ALL DEPENDS ${made})
    install(FILES ${made} TYPE MAN RENAME man${section}/${page} COMPONENT ${component})
endfunction()
