// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/TimeChange.h"

#include "client/card/ReadBack.h"
#include "client/model/Remedy.h"
#include "client/wire/Phase.h"

#include <fmt/core.h>

namespace
{

constexpr const char* setting = "setting the time reference";
constexpr const char* readingBack = "reading the time reference back";

Failure interruptedSetting(bool told)
{
    return {ExitCode::interrupted, Category::interrupted, setting,
            told ? fmt::format("the card may have the new time reference or the former one; `{}` tells",
                               wordOf(Remedy::readTime))
                 : "interrupted; nothing was sent"};
}

Failure unknown(Failure cause)
{
    cause.phase = readingBack;
    return unknownOutcome("the card confirmed the time reference, but what the card has now is not known",
                          std::move(cause));
}

Failure notTaken(std::string hint)
{
    return {ExitCode::verification, Category::notTaken, readingBack, std::move(hint)};
}

void verify(const TimeRequest& wanted, const TimeReading& reading, Seconds passed)
{
    const TimeReference& seen = reading.reference;
    if (seen.mode != wanted.mode) {
        throw notTaken(fmt::format("the card is in mode {}, not {}", wordOf(seen.mode), wordOf(wanted.mode)));
    }
    // A card says in words that it has none.
    if (seen.server != (wanted.server.empty() ? noNtpServer : wanted.server)) {
        throw notTaken(fmt::format("the card has the server \"{}\", not \"{}\"", seen.server, wanted.server));
    }
    if (wanted.mode == TimeMode::manual && !isSameClock(wanted.time, seen.time, passed)) {
        throw notTaken(fmt::format("the card's clock is {} s from what it was set to", seen.time - wanted.time));
    }
}

Task<void> send(Network& network, Endpoint endpoint, TimeRequest wanted, TimeProgress& progress)
{
    Request request = textRequest(CommandId::timeReferenceSet, timeReferenceSetXml(wanted));
    TcpConnection connection = co_await network.connect(std::move(endpoint), std::move(request));
    const TimePoint end = after(timeToAnswer(network, wanted.mode));
    progress.told = true; // before: when sending fails, a part may be with the card
    co_await connection.sendRequest(end);
    const Reply reply = co_await connection.receiveReply(end);
    checkStatus(reply.header);
}

Task<void> readOnce(Network& network, Endpoint endpoint, TimePoint end, TimeProgress& progress)
{
    progress.reading = co_await queryTimeUntil(network, std::move(endpoint), end);
}

Task<TimeOutcome> setAndReadBack(Network& network, Endpoint endpoint, TimeRequest wanted, TimeProgress& progress)
{
    const TimePoint start = Clock::now();
    const std::optional<Failure> failure =
        co_await failureOf(inPhase(setting, send(network, endpoint, wanted, progress)));
    const bool refused = failure && failure->code == ExitCode::refusedByCard;
    if (failure && !refused && failure->code != ExitCode::noAnswer) {
        throw Failure(*failure);
    }
    const TimePoint end = after(timeToAnswer(network, wanted.mode));
    const std::function<Task<void>()> ask = [&] { return readOnce(network, endpoint, end, progress); };
    const std::optional<Failure> cause = co_await readBack(network.eventLoop(), end, ask);
    if (cause) {
        throw failure ? unread(*failure, *cause) : unknown(*cause);
    }
    // Behind the reading, which tells what a card that refused has done before.
    if (refused) {
        throw Failure(*failure);
    }
    verify(wanted, *progress.reading, Clock::now() - start);
    co_return failure ? TimeOutcome::doneLate : TimeOutcome::done;
}

} // namespace

Seconds timeToAnswer(const Network& network, TimeMode wanted)
{
    constexpr Seconds forScripts{60}; // chosen
    return wanted == TimeMode::ntp ? network.timeoutOr(forScripts) : network.retryPolicy().timeout;
}

bool isSameClock(std::int64_t then, std::int64_t now, Seconds passed)
{
    constexpr double tolerance = 2; // seconds, chosen: one that is cut off, and one that a card may need to begin
    const auto off = static_cast<double>(now - then);
    return off >= -tolerance && off <= passed.count() + tolerance;
}

Task<TimeOutcome> setTimeReference(Network& network, Endpoint endpoint, TimeRequest wanted, TimeProgress& progress)
{
    try {
        const TimeOutcome outcome = co_await setAndReadBack(network, std::move(endpoint), std::move(wanted), progress);
        co_return outcome;
    } catch (const Interrupted&) {
        throw interruptedSetting(progress.told);
    }
}
