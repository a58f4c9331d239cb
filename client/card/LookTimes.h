// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"

#include <algorithm>
#include <chrono>

// When something that is waited for is looked at again. The time between two looks is counted from the beginning of the
// first, so that silence makes them no rarer, and the last one is when all time is over.
class LookTimes
{
public:
    static constexpr std::chrono::seconds between{2}; // chosen: a card serves nobody else while it is looked at

    LookTimes(TimePoint start, Seconds time) : end(start + std::chrono::duration_cast<Clock::duration>(time)) {}

    [[nodiscard]] bool areOver(TimePoint now) const { return now >= end; }
    [[nodiscard]] TimePoint nextAfter(TimePoint beginning) const { return std::min(beginning + between, end); }

private:
    TimePoint end;
};
