// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/NameCost.h"

#include "client/output/Console.h"

#include <fmt/core.h>

namespace
{

constexpr std::size_t manyNames = 64; // chosen

} // namespace

void noteCostOfChange(const Console& console, std::size_t names)
{
    if (names > manyNames) {
        console.note(
            fmt::format("{} names are asked for before anything is changed, which takes a while, and every "
                        "card that hears them logs a line for each; addresses avoid that, where they are taken",
                        names));
    }
}

void noteCostOfNames(const Console& console, std::size_t names)
{
    if (names > manyNames) {
        console.note(fmt::format("{} names are asked for, and every card that hears them logs a line for each; "
                                 "addresses, or names with an address in the groups file, avoid that",
                                 names));
    }
}
