# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
#
# cmake -D HEADER=... -D OUTPUT=... -P EmbedFiles.cmake -- NAME=FILE...
#
# Writes a source that defines, for each NAME of that header, a std::string_view with the bytes of FILE.

set(source "#include \"${HEADER}\"\n")
math(EXPR last "${CMAKE_ARGC} - 1")
set(is_file FALSE)
foreach(index RANGE ${last})
    set(argument "${CMAKE_ARGV${index}}")
    if(argument STREQUAL "--")
        set(is_file TRUE)
    elseif(is_file)
        string(REGEX MATCH "^([^=]+)=(.+)$" matched "${argument}")
        set(name ${CMAKE_MATCH_1})
        file(READ "${CMAKE_MATCH_2}" bytes HEX)
        string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
        string(APPEND source "static constexpr char bytesOf_${name}[] = {${bytes}};\n"
                             "const std::string_view ${name}(bytesOf_${name}, sizeof(bytesOf_${name}));\n")
    endif()
endforeach()
file(WRITE "${OUTPUT}" "${source}")
