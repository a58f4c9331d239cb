// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <chrono>
#include <cstdint>

// This machine's time of day, in seconds since 1970: for what is written down and read by a later run.
[[nodiscard]] inline std::int64_t secondsNow()
{
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

// The same with all that the clock tells.
[[nodiscard]] inline double exactSecondsNow()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}
