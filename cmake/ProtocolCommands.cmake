# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

# protocol_commands(<variable> <line>)
#
# A line for each command that docs/protocol.md lists, in which \1 is its number, \2 its name, \3 what is said of it after
# the name, and \4 over what it travels.
function(protocol_commands variable line)
    set(page ${PROJECT_SOURCE_DIR}/docs/protocol.md)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
    set(row "^\\| ([0-9]+) \\| ([^|:]+)([^|]*) \\| (TCP|UDP) \\|.*")
    file(STRINGS ${page} rows REGEX ${row})
    if(NOT rows)
        message(FATAL_ERROR "no commands found in ${page}")
    endif()
    list(TRANSFORM rows REPLACE ${row} "${line}")
    list(JOIN rows "\n" lines)
    set(${variable} "${lines}" PARENT_SCOPE)
endfunction()
