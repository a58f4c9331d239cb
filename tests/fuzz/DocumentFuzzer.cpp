// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "fuzz/FuzzedCard.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>

// What the production code tells its user is of no interest here, a thousand times a second.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    std::cout.setstate(std::ios::failbit);
    std::cerr.setstate(std::ios::failbit);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static FuzzedCard card;
    if (const std::string problem = card.feedDocument({data, size}); !problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        std::abort();
    }
    return 0;
}
