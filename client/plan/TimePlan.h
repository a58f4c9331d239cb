// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/messages/TimeReference.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What the user wants of `time set`: the given NTP server, or the time by hand.
struct TimeOptions {
    TimeMode mode = TimeMode::ntp;
    std::string server;    // of NTP mode
    std::int64_t time = 0; // in both: what the clock should show if it is set by hand, now otherwise
};

// Throws a usage Failure for a server or time that no card can hold. `unsafe`, here and below: also for a server that
// the card's shell would take for something else, unless this is true.
void checkTimeOptions(const TimeOptions& options, bool unsafe);

// The request that fulfils them on a card whose time reference is `now`. In manual mode the card's server must
// be sent along unchanged; throws a usage Failure if that is impossible, so that nothing is changed.
[[nodiscard]] TimeRequest planTime(const TimeReference& now, const TimeOptions& options, bool unsafe);

// The servers that the card has and will not have any more: its setting may be a list.
[[nodiscard]] std::vector<std::string> serversThatGo(const TimeReference& now, const TimeRequest& wanted);
