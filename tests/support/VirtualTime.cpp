// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/VirtualTime.h"

#include <poll.h>

namespace
{

VirtualTime* activeTime = nullptr;

int pollVirtually(pollfd* descriptors, nfds_t count, int milliseconds)
{
    if (activeTime == nullptr || milliseconds < 0) {
        return ::poll(descriptors, count, milliseconds);
    }
    const int ready = ::poll(descriptors, count, 0);
    if (ready == 0) {
        activeTime->move(std::chrono::milliseconds(milliseconds));
    }
    return ready;
}

} // namespace

VirtualTime::VirtualTime(Clock::duration newEachLook) : eachLook(newEachLook)
{
    activeTime = this;
}

VirtualTime::~VirtualTime()
{
    activeTime = nullptr;
}

VirtualTime::Clock::time_point VirtualTime::look()
{
    moved += eachLook;
    return start + moved;
}

// No function of C: it returns an object, and has the name of a fake all the same.
std::chrono::steady_clock::time_point fakeSteadyNow() __asm__("fake_steady_clock_now");

std::chrono::steady_clock::time_point fakeSteadyNow()
{
    return activeTime != nullptr ? activeTime->look() : std::chrono::steady_clock::now();
}

// The card's C++ library has another name for it.
std::chrono::steady_clock::time_point fakeSteadyNowOfLibcxx() __asm__("fake_steady_clock_now_libcxx");

std::chrono::steady_clock::time_point fakeSteadyNowOfLibcxx()
{
    return fakeSteadyNow();
}

extern "C" int fake_poll(pollfd* descriptors, nfds_t count, int milliseconds)
{
    return pollVirtually(descriptors, count, milliseconds);
}

extern "C" int fake_poll_chk(pollfd* descriptors, nfds_t count, int milliseconds, std::size_t)
{
    return pollVirtually(descriptors, count, milliseconds);
}
