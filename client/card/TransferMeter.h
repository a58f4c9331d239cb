// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <string>

// Tells how a transfer gets on, by what the card has acknowledged rather than by what waits in a buffer here. Knows no
// clock: moments are seconds since the start.
class TransferMeter
{
public:
    explicit TransferMeter(std::uint64_t newTotal) : total(newTotal) {}

    // To be told the state regularly, in ascending moments.
    void update(double moment, std::uint64_t acknowledgedBytes);

    [[nodiscard]] double rate() const;          // bytes a second since the start
    [[nodiscard]] double secondsLeft() const;   // at that rate; 0 before anything was acknowledged
    [[nodiscard]] double secondsSilent() const; // since bytes were last acknowledged
    [[nodiscard]] bool isComplete() const { return acknowledged >= total; }
    [[nodiscard]] double percent() const;
    [[nodiscard]] std::string text() const; // "3.1 of 12.4 MiB, 25 %, 2.0 MiB/s, 5 s left"

private:
    std::uint64_t total;
    std::uint64_t acknowledged = 0;
    double now = 0;
    double lastProgress = 0;
};
