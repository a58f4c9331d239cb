// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include <cstdio>

#include "sim/uci/CommandLine.h"

int main(int argc, char* argv[])
{
    const ToolResult result = runTool({argv + 1, argv + argc});
    std::fputs(result.output.c_str(), stdout);
    std::fputs(result.errors.c_str(), stderr);
    return std::fflush(stdout) == 0 ? result.status : 1;
}
