// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"

#include <algorithm>
#include <chrono>

// Until when names are listened to for a second answer: for a moment from the first one on, or as long again as that
// took, since another card may be as slow. Behind the asking no longer than one more time-out, whoever answers, but for
// the moment that each answer has.
class HearingOut
{
public:
    static constexpr Seconds moment{0.3}; // chosen: a card answers within milliseconds

    explicit HearingOut(Seconds timeout) : longest(std::max(timeout, moment)) {}

    void hear(TimePoint asked, TimePoint now)
    {
        const Seconds took = now - asked;
        lastAnswer = now;
        wanted = std::max(wanted, now + inTicks(std::clamp(took, moment, longest)));
    }
    void endAsking(TimePoint now) { limit = now + inTicks(longest); }

    [[nodiscard]] TimePoint end() const { return std::min(wanted, std::max(limit, lastAnswer + inTicks(moment))); }

private:
    static Clock::duration inTicks(Seconds time) { return std::chrono::ceil<Clock::duration>(time); }

    Seconds longest;
    TimePoint wanted;
    TimePoint lastAnswer;
    TimePoint limit = TimePoint::max();
};
