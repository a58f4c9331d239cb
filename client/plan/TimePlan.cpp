// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/TimePlan.h"

#include "client/model/Failure.h"
#include "client/model/ShellSafety.h"

#include <fmt/core.h>
#include <limits>

namespace
{

constexpr std::size_t longestServer = 98; // a card cuts at 99, so 99 may be a part of something longer
constexpr std::int64_t latestTime = std::numeric_limits<std::int32_t>::max();

Failure cannotSendBack(const TimeReference& now, std::string_view why)
{
    return {ExitCode::usage, "cannot-keep-server", "planning the change",
            fmt::format("the card's NTP server \"{}\" {}: it cannot be sent back unchanged along with the time, and an "
                        "empty one would delete the setting; nothing was changed",
                        now.server, why)};
}

// A manual time travels with the server that the card has; an empty text stands for none.
std::string serverToKeep(const TimeReference& now, bool unsafe)
{
    if (now.server == noNtpServer) {
        return "";
    }
    if (now.server.empty()) {
        throw cannotSendBack(now, "is empty");
    }
    if (now.server.find_first_of(" \t\r\n") != std::string::npos) {
        throw cannotSendBack(now, "has blanks");
    }
    if (now.server.size() > longestServer) {
        throw cannotSendBack(now, "may have been cut at 99 characters");
    }
    requireShellSafe(now.server, "the card's NTP server", unsafe);
    return now.server;
}

} // namespace

void checkTimeWish(const TimeWish& wish, bool unsafe)
{
    if (wish.time < 0 || wish.time > latestTime) {
        throw usageFailure(fmt::format("{} is beyond the card's 32-bit clock, which runs from {} to {}",
                                       formatTime(wish.time), formatTime(0), formatTime(latestTime)));
    }
    if (wish.manual) {
        return;
    }
    if (wish.server.empty()) {
        throw usageFailure("an empty NTP server would delete the card's setting; from then on its time could neither "
                           "be read nor set until somebody restores it");
    }
    if (wish.server == noNtpServer) {
        throw usageFailure("NOT CONFIGURED is what a card shows for no server; it cannot be set");
    }
    if (wish.server.size() > longestServer) {
        throw usageFailure(fmt::format("an NTP server has at most {} characters", longestServer));
    }
    requireShellSafe(wish.server, "the NTP server", unsafe);
}

TimeRequest planTime(const TimeReference& now, const TimeWish& wish, bool unsafe)
{
    if (wish.manual) {
        return {"Manual", serverToKeep(now, unsafe), wish.time};
    }
    return {"Ntp", wish.server, wish.time};
}
