// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <string>
#include <vector>

struct ToolResult {
    int status = 0;
    std::string output;
    std::string errors;
};

// The tool without its process: what it prints and its exit status for the given arguments (program name left out).
// Exit status 1 is a failed command, 255 a command line that makes no sense.
ToolResult runTool(const std::vector<std::string>& arguments);
