// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <ctime>
#include <optional>
#include <vector>

// The clock that the production code reads and sets. Read: this machine's, until a test stops it at a moment. Set:
// only noted down; failNext("clock_settime", EPERM) makes it fail.
class FakeClock
{
public:
    FakeClock();
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    void stopAt(std::time_t moment) { stopped = moment; }

    // The moments that clock_settime() was asked for, also when it failed.
    [[nodiscard]] const std::vector<timespec>& settings() const { return asked; }

    // For the fakes only.
    [[nodiscard]] std::time_t now() const;
    void ask(const timespec& moment) { asked.push_back(moment); }

private:
    std::optional<std::time_t> stopped;
    std::vector<timespec> asked;
};
