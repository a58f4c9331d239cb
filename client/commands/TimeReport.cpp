// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/TimeReport.h"

std::vector<Column> timeColumns()
{
    return {{"mode"}, {"server"}, {"time"}, {"skew"}, {"skew_error"}};
}

void report(const TimeReading& reading, Result& result)
{
    result.malformed = result.malformed || reading.reference.malformed;
    result.add("mode", std::string(wordOf(reading.reference.mode)));
    result.add("server", reading.reference.server);
    result.add("time", formatTime(reading.reference.time) + "Z");
    result.add("skew", reading.skew);
    result.add("skew_error", reading.skewError);
}
