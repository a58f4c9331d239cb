// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/ShellSafety.h"

#include "client/model/Failure.h"

#include <fmt/core.h>

void requireShellSafe(std::string_view value, std::string_view what, bool unsafe)
{
    // What is allowed, rather than what is not: that list could miss a character.
    constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.:_-";
    if (!unsafe && value.find_first_not_of(plain) != std::string_view::npos) {
        throw usageFailure(fmt::format("{} \"{}\" holds characters that the card's shell would interpret; --unsafe-raw "
                                       "sends it all the same",
                                       what, value));
    }
}
