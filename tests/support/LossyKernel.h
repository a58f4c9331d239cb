// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>

// While it lives, the kernel says of every socket of the production code that it threw so many datagrams away.
class LossyKernel
{
public:
    // It tells at most that many numbers of the list in which this one stands, as an emulator may.
    explicit LossyKernel(std::uint32_t newLost, unsigned newTold = 9);
    ~LossyKernel();
    LossyKernel(const LossyKernel&) = delete;
    LossyKernel& operator=(const LossyKernel&) = delete;

    // For the fakes only.
    std::uint32_t lost;
    unsigned told;
};
