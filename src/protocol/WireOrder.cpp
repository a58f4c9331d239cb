// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/WireOrder.h"

#include "util/LibUtils.h"

void convertWords64([[maybe_unused]] void* data, [[maybe_unused]] std::size_t count)
{
    if constexpr (hostIsBigEndian) {
        LibUtils::swapBytes64(data, count);
    }
}

void convertWords32([[maybe_unused]] void* data, [[maybe_unused]] std::size_t count)
{
    if constexpr (hostIsBigEndian) {
        LibUtils::swapBytes32(data, count);
    }
}

void convertWords16([[maybe_unused]] void* data, [[maybe_unused]] std::size_t count)
{
    if constexpr (hostIsBigEndian) {
        LibUtils::swapBytes16(data, count);
    }
}
