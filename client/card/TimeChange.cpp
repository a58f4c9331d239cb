// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/TimeChange.h"

#include "client/card/ReadBack.h"
#include "client/wire/Phase.h"

#include <fmt/core.h>

namespace
{

Failure interruptedSetting()
{
    return {ExitCode::interrupted, Category::interrupted, "setting the time reference",
            "the card may have the new time reference or the former one; `tarvelctl time get` tells"};
}

Failure notTaken(std::string hint)
{
    return {ExitCode::verification, Category::notTaken, readingBack, std::move(hint)};
}

void verify(const TimeRequest& wanted, const TimeReading& reading, Seconds passed)
{
    constexpr double tolerance = 2; // seconds; the card tells whole ones
    const TimeReference& seen = reading.reference;
    if (seen.mode != wanted.mode) {
        throw notTaken(fmt::format("the card is in mode {}, not {}", wordOf(seen.mode), wordOf(wanted.mode)));
    }
    if (seen.server != (wanted.server.empty() ? noNtpServer : wanted.server)) {
        throw notTaken(fmt::format("the card has the server \"{}\", not \"{}\"", seen.server, wanted.server));
    }
    const auto off = static_cast<double>(seen.time - wanted.time);
    if (wanted.mode == TimeMode::manual && (off < -tolerance || off > passed.count() + tolerance)) {
        throw notTaken(fmt::format("the card's clock is {:.0f} s from what it was set to", off));
    }
}

Task<void> send(Network& network, Endpoint endpoint, TimeRequest wanted)
{
    Request request = textRequest(CommandId::timeReferenceSet, timeReferenceSetXml(wanted));
    TcpConnection connection = co_await network.connect(std::move(endpoint), std::move(request));
    const TimePoint end = after(timeToAnswer(network, wanted.mode));
    co_await connection.sendRequest(end);
    const Reply reply = co_await connection.receiveReply(end);
    checkStatus(reply.header);
}

Task<void> readOnce(Network& network, Endpoint endpoint, TimePoint end, std::optional<TimeReading>& reading)
{
    reading = co_await queryTimeUntil(network, std::move(endpoint), end);
}

Task<TimeOutcome> setAndReadBack(Network& network, Endpoint endpoint, TimeRequest wanted,
                                 std::optional<TimeReading>& reading)
{
    const TimePoint start = Clock::now();
    const std::optional<Failure> failure =
        co_await failureOf(inPhase("setting the time reference", send(network, endpoint, wanted)));
    const bool refused = failure && failure->code == ExitCode::refusedByCard;
    if (failure && !refused && failure->code != ExitCode::noAnswer) {
        throw Failure(*failure);
    }
    const TimePoint end = after(timeToAnswer(network, wanted.mode));
    const std::function<Task<void>()> ask = [&] { return readOnce(network, endpoint, end, reading); };
    std::optional<Failure> cause = co_await readBack(network.eventLoop(), end, ask);
    if (cause) {
        cause->phase = readingBack; // or it would look as if the card had not been told
    }
    if (failure && cause) {
        throw unread(*failure, *cause);
    }
    if (refused || cause) {
        throw Failure(refused ? *failure : *cause);
    }
    verify(wanted, *reading, Clock::now() - start);
    co_return failure ? TimeOutcome::doneLate : TimeOutcome::done;
}

} // namespace

Seconds timeToAnswer(const Network& network, TimeMode wanted)
{
    constexpr Seconds forScripts{60}; // chosen
    return wanted == TimeMode::ntp ? network.timeoutOr(forScripts) : network.retryPolicy().timeout;
}

Task<TimeOutcome> setTimeReference(Network& network, Endpoint endpoint, TimeRequest wanted,
                                   std::optional<TimeReading>& reading)
{
    try {
        const TimeOutcome outcome = co_await setAndReadBack(network, std::move(endpoint), std::move(wanted), reading);
        co_return outcome;
    } catch (const Interrupted&) {
        throw interruptedSetting();
    }
}
