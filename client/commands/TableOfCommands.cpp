// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Command.h"
#include "client/commands/Commands.h"

#include <array>

namespace
{

constexpr std::array commands = {
    CommandRow{"versions", "show the component versions of cards",
               "tarvelctl versions card01\n"
               "tarvelctl versions --diff card[01-16]\n"
               "tarvelctl -o json versions 10.0.0.11",
               makeVersions},
};

} // namespace

std::span<const CommandRow> commandTable()
{
    return commands;
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
