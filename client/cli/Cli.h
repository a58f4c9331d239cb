// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Command.h"
#include "client/cli/GlobalOptions.h"

#include <memory>
#include <string>
#include <string_view>

// The command line, read: which command with which options. The command has its options already.
struct CommandLine {
    GlobalOptions options;
    std::unique_ptr<Command> command; // null if there is nothing to do but print `text`
    std::string commandName;
    std::string text; // of --help or --version, for stdout
};

// Fills `line` in place, since options keep the addresses of their variables. Throws a usage Failure.
void parseCommandLine(int argc, const char* const* argv, CommandLine& line);
