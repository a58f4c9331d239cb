// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Reboot.h"

#include "client/card/Identity.h"
#include "client/card/Queries.h"
#include "client/card/ReadBack.h"
#include "client/model/Remedy.h"
#include "client/wire/Phase.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

// All chosen, not measured. A card is away for many seconds when it reboots, so two seconds of silence are a small part
// of it. One that is up and busy may need a good part of a second for an answer: it is not asked again before that,
// which would only make it slower, and a late answer counts. Three questions bear a lost datagram.
constexpr Seconds glance{0.15};                     // between two looks at a card that goes down or comes back
constexpr RetryPolicy untilSilent{Seconds(1.8), 2}; // for a card that accepts no connection
constexpr Seconds longestAnswer{4};                 // of a card that comes back, if it did not answer in less: it boots
constexpr double growth = 1.3;    // of the time for an answer, from one glance to the longest in 13 looks
constexpr Seconds longestRest{3}; // of a card that was told: it goes down two seconds later

Failure stayedUp()
{
    return {ExitCode::verification, Category::stayedUp, "waiting for the card to go down",
            "the card confirmed the reboot, but answered all the time"};
}

Failure notDone()
{
    return {ExitCode::verification, Category::stayedUp, "watching whether the card reboots all the same",
            "the card did not confirm the reboot, and answered all the time after"};
}

Failure tooEarly()
{
    return {ExitCode::noAnswer, Category::timeout, "watching whether the card reboots all the same",
            fmt::format("the card did not confirm the reboot, and still answers, but would go down only two seconds "
                        "after; a longer {} tells more",
                        wordOf(Remedy::waitLonger))};
}

Failure notConfirmed()
{
    return {ExitCode::noAnswer, Category::timeout, "watching whether the card reboots all the same",
            "the card did not confirm the reboot, and does not answer any more: it may reboot, or be out of reach"};
}

Failure notBack()
{
    return {ExitCode::noAnswer, Category::notBack, "waiting for the card to come back",
            "the card went down, but did not answer again in time"};
}

Failure interruptedReboot(std::string phase, bool confirmed)
{
    return {ExitCode::interrupted, Category::interrupted, std::move(phase),
            confirmed ? "the card reboots all the same" : "the card may reboot all the same: it has not confirmed it"};
}

} // namespace

Task<void> Reboot::run(std::optional<Seconds> waitTime)
{
    const CardReply card = co_await queryCard(network, name);
    std::optional<Endpoint> openPort;
    if (waitTime) {
        openPort = co_await openPortOf(card);
    }
    try {
        sent = Clock::now();
        confirmed = co_await send(card.interface);
        if (!confirmed) {
            co_await readBack(card, openPort, waitTime);
        } else if (waitTime) {
            co_await seeThrough(openPort, *waitTime);
        }
    } catch (const Interrupted&) {
        throw interruptedReboot(phase, confirmed);
    }
}

// Only a port that was open before tells anything when it is closed: the address that a card is heard from may be
// another host's on the way there.
Task<std::optional<Endpoint>> Reboot::openPortOf(const CardReply& card)
{
    std::optional<Endpoint> way = wayTo(card);
    if (!way) {
        co_return std::nullopt;
    }
    try {
        const PortState port = co_await network.probe(*way, glance);
        co_return port == PortState::open ? way : std::nullopt;
    } catch (const Failure&) { // no way there
        co_return std::nullopt;
    }
}

// False if nothing came back.
Task<bool> Reboot::send(std::string interface)
{
    Request request = textRequest(CommandId::reboot, rebootXml(name));
    ByName how;
    how.onlyInterface = std::move(interface);
    try {
        co_await inPhase(phase, network.askByName(name, std::move(request), std::move(how)));
    } catch (const Failure& failure) {
        // Else it may have left, whatever failed then.
        if (wasNotSent(failure)) {
            sent.reset();
        }
        if (failure.code != ExitCode::noAnswer) {
            throw;
        }
        co_return false;
    }
    co_return true;
}

// A card that answers all the time was not told, or did not do it. Silence alone may be that of the network: only a
// card that comes back after it has rebooted.
Task<void> Reboot::readBack(const CardReply& card, std::optional<Endpoint> openPort, std::optional<Seconds> waitTime)
{
    phase = "watching whether the card reboots all the same";
    if (!openPort) {
        openPort = co_await openPortOf(card);
    }
    const bool wentDown = co_await seeItGoDown(openPort, network.deadline());
    if (!wentDown) {
        throw Clock::now() - *sent > longestRest ? notDone() : tooEarly();
    }
    if (!waitTime) {
        throw notConfirmed();
    }
    down = Clock::now() - *sent;
    co_await seeItComeBack(after(*waitTime));
    back = Clock::now() - *sent;
}

Task<void> Reboot::seeThrough(std::optional<Endpoint> openPort, Seconds waitTime)
{
    const TimePoint start = Clock::now();
    const TimePoint end = after(waitTime);
    phase = "waiting for the card to go down";
    const bool wentDown = co_await seeItGoDown(std::move(openPort), end);
    if (!wentDown) {
        throw stayedUp();
    }
    down = Clock::now() - start;
    phase = "waiting for the card to come back";
    co_await seeItComeBack(end);
    back = Clock::now() - start;
}

// A card that went down while this machine could not look at it was not seen to stay up.
Task<bool> Reboot::seeItGoDown(std::optional<Endpoint> openPort, TimePoint end)
{
    while (Clock::now() < end) {
        const TimePoint next = after(glance);
        try {
            const bool isUp = co_await answers(openPort);
            if (!isUp) {
                co_return true;
            }
        } catch (const Failure& failure) {
            hindrance = failure;
        }
        co_await network.eventLoop().until(next);
    }
    if (hindrance) {
        throw unknownOutcome("whether the card rebooted is not known", *hindrance);
    }
    co_return false;
}

// Down is a card that refuses connections, or from which nothing at all comes. The port is tried first because that
// costs the card least.
Task<bool> Reboot::answers(std::optional<Endpoint> openPort)
{
    PortState port = PortState::silent;
    if (openPort) {
        port = co_await network.probe(*openPort, glance);
    }
    bool answers = port == PortState::open;
    if (port == PortState::silent) {
        answers = co_await answersByName(untilSilent);
    }
    co_return answers;
}

// Asks with growing patience: a card that is slow to answer must not be given up before it does.
Task<void> Reboot::seeItComeBack(TimePoint end)
{
    Seconds time = glance;
    while (Clock::now() < end) {
        const TimePoint next = after(glance);
        const RetryPolicy once{time, 0};
        hindrance.reset();
        try {
            const bool isBack = co_await answersByName(once);
            if (isBack) {
                co_return;
            }
        } catch (const Failure& failure) {
            hindrance = failure;
        }
        time = std::min(longestAnswer, time * growth);
        co_await network.eventLoop().until(next);
    }
    throw hindrance ? unknownOutcome("whether the card is back is not known", *hindrance) : notBack();
}

// A refusal, too, comes from a card that is up. Throws a Failure of this machine.
Task<bool> Reboot::answersByName(RetryPolicy policy)
{
    try {
        co_await queryIpConfiguration(network, name, policy);
    } catch (const Failure& failure) {
        if (isOfThisMachine(failure)) {
            throw;
        }
        co_return failure.code == ExitCode::refusedByCard || failure.code == ExitCode::protocol;
    }
    co_return true;
}
