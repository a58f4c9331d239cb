// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/TransferMeter.h"

#include <fmt/core.h>

namespace
{

constexpr double mebibyte = 1024.0 * 1024.0;

} // namespace

void TransferMeter::update(double moment, std::uint64_t acknowledgedBytes)
{
    now = moment;
    if (acknowledgedBytes > acknowledged) {
        acknowledged = acknowledgedBytes;
        lastProgress = moment;
    }
}

double TransferMeter::rate() const
{
    return now > 0 ? static_cast<double>(acknowledged) / now : 0;
}

double TransferMeter::secondsLeft() const
{
    return rate() > 0 ? static_cast<double>(total - acknowledged) / rate() : 0;
}

double TransferMeter::secondsSilent() const
{
    return now - lastProgress;
}

double TransferMeter::percent() const
{
    return total > 0 ? 100.0 * static_cast<double>(acknowledged) / static_cast<double>(total) : 100;
}

std::string TransferMeter::text() const
{
    return fmt::format("{:.1f} of {:.1f} MiB, {:.0f} %, {:.1f} MiB/s, {:.0f} s left",
                       static_cast<double>(acknowledged) / mebibyte, static_cast<double>(total) / mebibyte, percent(),
                       rate() / mebibyte, secondsLeft());
}
