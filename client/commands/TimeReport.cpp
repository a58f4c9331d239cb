// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/TimeReport.h"

#include "client/commands/Exchanges.h"

#include <chrono>

namespace
{

double now()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

double skewOf(const TimeReference& reference, double before, double afterwards)
{
    constexpr double meanOfCutSecond = 0.5; // the card tells whole seconds, cut
    return static_cast<double>(reference.time) + meanOfCutSecond - (before + afterwards) / 2;
}

} // namespace

Task<TimeReading> readTime(Context& context, Endpoint endpoint)
{
    const double before = now();
    try {
        const TimeReference reference = co_await getTimeReference(context, std::move(endpoint));
        co_return TimeReading{reference, skewOf(reference, before, now())};
    } catch (Failure& failure) {
        if (failure.code == ExitCode::refusedByCard) {
            failure.hint = "the card refused (status 2): its setting system.ntp.server is missing, and until somebody "
                           "restores it on the card its time can neither be read nor set";
        }
        throw;
    }
}

void report(const TimeReading& reading, Result& result)
{
    result.malformed = result.malformed || reading.reference.malformed;
    result.add("mode", reading.reference.mode);
    result.add("server", reading.reference.server);
    result.add("time", formatTime(reading.reference.time) + "Z");
    result.add("skew", reading.skew);
}
