// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Commands.h"

std::span<const CommandRow> commandTable()
{
    return commandRows;
}

std::string_view groupSummary(std::string_view group)
{
    if (group == "time") {
        return "show or set the time reference";
    }
    if (group == "ip") {
        return "show, set or rescue the IP configuration";
    }
    return group == "firmware" ? "check, upload or install a firmware archive" : "";
}
