// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/OptionSet.h"

#include <utility>

OptionSpec& OptionSet::add(OptionSpec spec)
{
    return all.emplace_back(std::move(spec));
}

OptionSpec& OptionSet::flag(std::string names, bool& destination, std::string help)
{
    return add({.names = std::move(names),
                .destination = &destination,
                .help = std::move(help),
                .valueName = {},
                .choices = {}});
}

OptionSpec& OptionSet::value(std::string names, OptionSpec::Destination destination, std::string valueName,
                             std::string help)
{
    return add({.names = std::move(names),
                .destination = destination,
                .help = std::move(help),
                .valueName = std::move(valueName),
                .choices = {}});
}

OptionSpec& OptionSet::argument(const std::string& name, OptionSpec::Destination destination, std::string help)
{
    OptionSpec& spec =
        add({.names = name, .destination = destination, .help = std::move(help), .valueName = name, .choices = {}});
    spec.required = true;
    return spec;
}
