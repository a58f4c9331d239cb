// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/TimePlan.h"

#include "client/model/Failure.h"
#include "client/model/ShellSafety.h"

#include <fmt/core.h>
#include <limits>
#include <sstream>

namespace
{

constexpr std::size_t longestServer = 98; // a card cuts at 99, so 99 may be a part of something longer
constexpr std::int64_t latestTime = std::numeric_limits<std::int32_t>::max(); // the card's tools count 32 bits

Failure cannotSendBack(const TimeReference& now, std::string_view why)
{
    return {ExitCode::usage, Category::cannotKeepServer, "planning the change",
            fmt::format("the card's NTP server \"{}\" {}: it cannot be sent back unchanged along with the time, and an "
                        "empty one would delete the setting; nothing was changed",
                        now.server, why)};
}

// A manual time travels with the server that the card has; an empty text stands for none. What the card has already it
// compares and does not hand to its shell, so that a list with blanks may go back.
std::string serverToKeep(const TimeReference& now, bool unsafe)
{
    if (now.server == noNtpServer) {
        return "";
    }
    if (now.server.empty()) {
        throw cannotSendBack(now, "is empty");
    }
    if (now.server.size() > longestServer) {
        throw cannotSendBack(now, "may have been cut at 99 characters");
    }
    std::string words = now.server;
    std::erase(words, ' ');
    requireShellSafe(words, "the card's NTP server", unsafe);
    return now.server;
}

} // namespace

void checkTimeOptions(const TimeOptions& options, bool unsafe)
{
    if (options.time < 0 || options.time > latestTime) {
        throw usageFailure(fmt::format("{} is beyond the card's 32-bit clock, which runs from {} to {}",
                                       formatTime(options.time), formatTime(0), formatTime(latestTime)));
    }
    if (options.mode == TimeMode::manual) {
        return;
    }
    if (options.server.empty()) {
        throw usageFailure("an empty NTP server would delete the card's setting; from then on its time could neither "
                           "be read nor set until somebody restores it");
    }
    if (options.server == noNtpServer) {
        throw usageFailure("NOT CONFIGURED is what a card shows for no server; it cannot be set");
    }
    if (options.server.size() > longestServer) {
        throw usageFailure(fmt::format("an NTP server has at most {} characters", longestServer));
    }
    if (options.server.starts_with('-')) {
        throw usageFailure(fmt::format("\"{}\" is an option, no NTP server", options.server));
    }
    requireShellSafe(options.server, "the NTP server", unsafe);
}

TimeRequest planTime(const TimeReference& now, const TimeOptions& options, bool unsafe)
{
    if (options.mode == TimeMode::manual) {
        return {TimeMode::manual, serverToKeep(now, unsafe), options.time};
    }
    return {TimeMode::ntp, options.server, options.time};
}

std::vector<std::string> serversThatGo(const TimeReference& now, const TimeRequest& wanted)
{
    std::vector<std::string> gone;
    std::istringstream servers(now.server == noNtpServer ? "" : now.server);
    for (std::string server; servers >> server;) {
        if (server != wanted.server) {
            gone.push_back(server);
        }
    }
    return gone;
}
