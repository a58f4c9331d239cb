// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/CommandLine.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace
{

// A card may have the tool of its time.
Generation generationToday()
{
    const char* year = std::getenv("SIM_UCI_YEAR");
    const bool isOld = year != nullptr && std::string_view(year) == "2014";
    return isOld ? Generation::of2014 : Generation::today;
}

} // namespace

int main(int argc, char* argv[])
{
    const ToolResult result = runTool({argv + 1, argv + argc}, generationToday());
    std::fputs(result.output.c_str(), stdout);
    std::fputs(result.errors.c_str(), stderr);
    return std::fflush(stdout) == 0 ? result.status : 1;
}
