// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <span>
#include <string>

// What the production code tells its user is of no interest in a fuzzer, a thousand times a second.
inline int muteProductionCode()
{
    std::cout.setstate(std::ios::failbit);
    std::cerr.setstate(std::ios::failbit);
    return 0;
}

// Feeds a card of paper, which is made once, and ends the process if that goes wrong.
template<typename Card>
int feed(std::string (Card::*how)(std::span<const std::uint8_t>), const std::uint8_t* data, std::size_t size)
{
    static Card card;
    if (const std::string problem = (card.*how)({data, size}); !problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        std::abort();
    }
    return 0;
}
