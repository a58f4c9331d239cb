# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

# tarveld_library(<name> SOURCES <file>... [LINK <library>...])
#
# One static library per folder of src/. What it may link is the folder's list of neighbours, and nothing else.
function(tarveld_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>)
    target_link_libraries(${name} PUBLIC ${arg_LINK})
endfunction()
