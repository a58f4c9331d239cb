# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

# GNU ld, of the objcopy's own family: no other linker resolves the groups of a relocatable link.
string(REGEX REPLACE "(llvm-)?objcopy[^/]*$" "ld" ld_of_objcopy "${CMAKE_OBJCOPY}")
find_program(TARVELD_GNU_LD NAMES ${ld_of_objcopy} ld.bfd DOC "GNU ld, for the archive of the time settings")

# add_private_archive(<name> FROM <library>... KEEP <operation>...)
#
# One static library of all objects of the named ones, linked into a single object in which only the named operations
# (as C++ mangles them, without their arguments) are global. Its user may have names of its own that are ours within,
# instances of the standard library's templates among them.
function(add_private_archive name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FROM;KEEP")
    list(TRANSFORM arg_FROM REPLACE "(.+)" "$<TARGET_OBJECTS:\\1>" OUTPUT_VARIABLE objects)
    list(TRANSFORM arg_KEEP REPLACE "(.+)" "--keep-global-symbol=_Z*\\1*" OUTPUT_VARIABLE kept)
    set(object ${CMAKE_CURRENT_BINARY_DIR}/${name}.o)
    add_custom_command(OUTPUT ${object}
        COMMAND ${TARVELD_GNU_LD} -r --force-group-allocation -o ${object}.all ${objects}
        COMMAND ${CMAKE_OBJCOPY} --wildcard ${kept} ${object}.all ${object}
        DEPENDS ${arg_FROM}
        COMMAND_EXPAND_LISTS VERBATIM
        COMMENT "Keeping the operations of ${name} only")
    add_library(${name} STATIC ${object})
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
endfunction()
