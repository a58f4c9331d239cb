// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Commands.h"

#include <string>
#include <vector>

// The tool without its process: what it prints and its exit status for the given arguments (program name left out).
// Exit status 1 is a failed command, 255 a command line that makes no sense or that is not simulated.
ToolResult runTool(const std::vector<std::string>& arguments, Generation generation = Generation::today);
