// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <span>
#include <string_view>

// The exit status, part of the contract with scripts. With several targets it is their common one, or `mixed`.
enum class ExitCode : int {
    ok = 0,
    internal = 1,
    usage = 2,
    refusedByCard = 3, // status 2
    protocol = 4,      // status 3 to 6, or an answer that makes no sense
    noAnswer = 5,      // connected or sent, but nothing came in time
    unreachable = 6,   // refused, no route, or no connection in time
    verification = 7,  // the card answered well, but is not what it was told to be
    mixed = 8,         // several targets with different outcomes
    differs = 9,       // a difference was found
    badFile = 10,
    ambiguous = 11, // another card could be meant; nothing was sent
    interrupted = 130,
};

struct ExitStatus {
    ExitCode code;
    std::string_view meaning;
};

[[nodiscard]] std::span<const ExitStatus> exitStatuses(); // as --help and the manual page list them
