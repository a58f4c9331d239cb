// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "util/Hardened.h"

#include <string>

// What the shell gets for a command. In the hardened build it takes no word for a pattern of file names, so that no
// file's name can stand in for a key. A template for what is not chosen not to be compiled.
[[nodiscard]] decltype(auto) shellText(const auto& command)
{
    if constexpr (hardened) {
        return "set -f; " + command;
    } else {
        return (command);
    }
}

// Runs `command` through the shell and waits for it. Returns the raw wait status, or -1 with errno set when no
// shell could be run. Callers read the status in three ways on purpose: as a whole, as an exit code, or only for -1.
[[nodiscard]] int runShell(const std::string& command);

// Bits 8 to 15 of a wait status. A command that a signal killed has exit code 0.
[[nodiscard]] constexpr int exitCode(int waitStatus)
{
    return (waitStatus >> 8) & 0xFF;
}
