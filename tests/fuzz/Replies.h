// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/SampleMessages.h"

#include <cstdint>
#include <span>
#include <string>

// What holds for the card's answer to any message, written down independently of the daemon: from the message alone it
// follows which status is possible, and whether there may be an answer at all.

struct Expectation {
    std::uint8_t least = 0; // number of replies
    std::uint8_t most = 0;
    std::uint8_t firstStatus = 0; // the range that the status is in
    std::uint8_t lastStatus = 0;
};

inline constexpr Expectation noReply{};

// One reply with this status.
[[nodiscard]] constexpr Expectation refusal(std::uint8_t status)
{
    return {1, 1, status, status};
}

// What a handler makes of it, with 1 or 2; `least` is 0 if it may keep silent.
[[nodiscard]] constexpr Expectation handled(std::uint8_t least)
{
    return {least, 1, 1, 2};
}

// What is wrong with `reply` as the one answer to `request`, or an empty text.
[[nodiscard]] std::string objectionToReply(std::span<const std::uint8_t> reply, const SampleHeader& request,
                                           const Expectation& expected);
