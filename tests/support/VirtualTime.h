// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <chrono>

// While it lives, the steady clock of the production code stands still: only a poll() in which nothing happens moves it
// on, by as long as it would have waited, and does not wait. So a test can count what happens in how much time, however
// fast the machine is. The clock may also move on by itself each time somebody looks at it.
class VirtualTime
{
public:
    using Clock = std::chrono::steady_clock;

    explicit VirtualTime(Clock::duration newEachLook = Clock::duration::zero());
    ~VirtualTime();
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;

    [[nodiscard]] Clock::duration passed() const { return moved; }

    // For the fakes only.
    [[nodiscard]] Clock::time_point look();
    void move(Clock::duration time) { moved += time; }

private:
    Clock::time_point start = Clock::now();
    Clock::duration eachLook;
    Clock::duration moved = Clock::duration::zero();
};
