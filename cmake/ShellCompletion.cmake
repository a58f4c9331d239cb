# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

# shell_completion(<program> <shell> <folder> <name>)
#
# Has the finished program print its completion for a shell, and installs that with the client as <name>, in the folder
# where the shell looks for it.
function(shell_completion program shell folder name)
    set(made ${CMAKE_CURRENT_BINARY_DIR}/completion.${shell})
    add_custom_command(
        OUTPUT ${made}
        COMMAND ${program} completion ${shell} > ${made}
        DEPENDS ${program}
        VERBATIM)
    add_custom_target(${program}_completion_${shell} ALL DEPENDS ${made})
    install(FILES ${made} DESTINATION ${folder} RENAME ${name} COMPONENT client)
endfunction()
