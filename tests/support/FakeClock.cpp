// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/FakeClock.h"

#include "support/Replaced.h"

namespace
{

FakeClock* activeClock = nullptr;

} // namespace

FakeClock::FakeClock()
{
    activeClock = this;
}

FakeClock::~FakeClock()
{
    activeClock = nullptr;
}

std::time_t FakeClock::now() const
{
    return stopped.value_or(std::time(nullptr));
}

extern "C" time_t fake_time(time_t* result)
{
    return replaced("time", {}, time_t{-1}, [&] {
        const time_t now = activeClock != nullptr ? activeClock->now() : std::time(nullptr);
        if (result != nullptr) {
            *result = now;
        }
        return now;
    });
}

extern "C" int fake_clock_settime(clockid_t clock, const timespec* moment)
{
    if (activeClock != nullptr) {
        activeClock->ask(*moment);
    }
    const std::string name = clock == CLOCK_REALTIME ? "CLOCK_REALTIME" : std::to_string(clock);
    return replaced("clock_settime", name + " " + std::to_string(moment->tv_sec), -1, [] { return 0; });
}

extern "C" tm* fake_gmtime(const time_t* moment)
{
    return replaced("gmtime", std::to_string(*moment), static_cast<tm*>(nullptr), [&] { return std::gmtime(moment); });
}

extern "C" size_t fake_strftime(char* text, size_t size, const char* format, const tm* moment)
{
    return replaced("strftime", format, size_t{0}, [&] { return std::strftime(text, size, format, moment); });
}

extern "C" time_t fake_mktime(tm* fields)
{
    return replaced("mktime", {}, time_t{-1}, [&] { return std::mktime(fields); });
}

// The other names of these calls.
extern "C" [[gnu::alias("fake_clock_settime")]] int fake_clock_settime64(clockid_t clock, const timespec* moment);
extern "C" [[gnu::alias("fake_time")]] time_t fake_time64(time_t* result);
extern "C" [[gnu::alias("fake_gmtime")]] tm* fake_gmtime64(const time_t* moment);
extern "C" [[gnu::alias("fake_mktime")]] time_t fake_mktime64(tm* fields);
