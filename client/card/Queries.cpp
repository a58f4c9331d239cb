// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Queries.h"

#include "client/card/Identity.h"
#include "client/model/CalendarTime.h"
#include "client/wire/Phase.h"

namespace
{

constexpr double meanOfCutSecond = 0.5; // a card tells whole seconds, cut

// When the card looked at its clock is known only to lie between question and answer: the middle, give or take half.
TimeReading readingOf(TimeReference reference, double before, double afterwards)
{
    const double cardsTime = static_cast<double>(reference.time) + meanOfCutSecond;
    return {.reference = std::move(reference),
            .skew = cardsTime - (before + afterwards) / 2,
            .skewError = meanOfCutSecond + (afterwards - before) / 2};
}

Task<Versions> askVersions(Network& network, Endpoint endpoint)
{
    const Reply reply = co_await network.ask(std::move(endpoint), bareRequest(CommandId::versions));
    co_return parseVersions(textOf(reply));
}

Task<TimeReference> askTimeReference(Network& network, Endpoint endpoint)
{
    const Reply reply = co_await network.ask(std::move(endpoint), bareRequest(CommandId::timeReferenceGet));
    co_return parseTimeReference(textOf(reply));
}

Task<TimeReference> askTimeReferenceUntil(Network& network, Endpoint endpoint, TimePoint deadline)
{
    const Reply reply =
        co_await network.askUntil(deadline, std::move(endpoint), bareRequest(CommandId::timeReferenceGet));
    // A refusal is an answer, too: who waits for a card to come up need not wait longer.
    checkStatus(reply.header);
    co_return parseTimeReference(textOf(reply));
}

Task<TimeReading> readTime(Task<TimeReference> asking)
{
    const double before = exactSecondsNow();
    try {
        const TimeReference reference = co_await inPhase("waiting for the time reference", std::move(asking));
        co_return readingOf(reference, before, exactSecondsNow());
    } catch (Failure& failure) {
        if (failure.code == ExitCode::refusedByCard) {
            failure.hint = "the card refused (status 2): its setting system.ntp.server is missing, and until somebody "
                           "restores it on the card its time can neither be read nor set";
        }
        throw;
    }
}

} // namespace

Task<CardIp> queryIpConfiguration(Network& network, std::string card, std::optional<RetryPolicy> policy)
{
    const CardReply answer = co_await queryCard(network, std::move(card), policy);
    co_return CardIp{ipConfigurationIn(answer), answer.address, answer.interface};
}

Task<Versions> queryVersions(Network& network, Endpoint endpoint)
{
    return inPhase("waiting for the versions report", askVersions(network, std::move(endpoint)));
}

// Without a phase: who waits for a card knows for what.
Task<Versions> queryVersionsUntil(Network& network, Endpoint endpoint, TimePoint deadline)
{
    const Reply reply = co_await network.askUntil(deadline, std::move(endpoint), bareRequest(CommandId::versions));
    checkStatus(reply.header);
    co_return parseVersions(textOf(reply));
}

Task<TimeReading> queryTime(Network& network, Endpoint endpoint)
{
    return readTime(askTimeReference(network, std::move(endpoint)));
}

Task<TimeReading> queryTimeUntil(Network& network, Endpoint endpoint, TimePoint deadline)
{
    return readTime(askTimeReferenceUntil(network, std::move(endpoint), deadline));
}
