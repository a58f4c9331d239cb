// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/CardWatch.h"

#include "client/card/Identity.h"
#include "client/card/Queries.h"

#include <utility>

namespace
{

void takeAnswer(const CardReply& answer, Sight& sight)
{
    sight.state = CardState::up;
    sight.hindrance.reset();
    sight.heardOn = answer.interface;
    const std::optional<Endpoint> way = wayTo(answer);
    // An address that the user wrote down stays, unless the card itself tells a better one.
    if (way || sight.isLookedUp) {
        sight.endpoint = way;
        sight.isLookedUp = way.has_value();
    }
}

} // namespace

CardWatch::CardWatch(EventLoop& loop, Network& newNetwork, Question newQuestion, std::size_t places)
    : network(newNetwork), question(newQuestion), rounds(newNetwork), polls(loop, places)
{
}

// A name is asked for where its address is not known, or is silent: the card may have got another one, or one at last.
Task<void> CardWatch::look(const Target& target, Sight& sight)
{
    sight.hindrance.reset();
    if (sight.endpoint) {
        co_await lookOverTcp(sight);
    }
    const bool isUnseen = !sight.endpoint || sight.hindrance || isDown(sight.state);
    if (isUnseen && !target.name.empty() && !target.isAddress()) {
        co_await lookByName(target.name, sight);
    }
}

Task<void> CardWatch::lookOverTcp(Sight& sight)
{
    const Slots::Held place = co_await polls;
    try {
        if (question == Question::connection) {
            const PortState port = co_await network.probe(*sight.endpoint, network.retryPolicy().timeout);
            sight.state = stateOf(port);
            co_return;
        }
        Versions versions = co_await queryVersionsUntil(network, *sight.endpoint, network.deadline());
        sight.components = std::move(versions.components);
        sight.state = CardState::upAndIdle;
    } catch (const Failure& failure) {
        if (isOfThisMachine(failure)) {
            sight.hindrance = failure;
        } else {
            sight.state = stateOf(failure);
        }
    }
}

// All names whose time has come are asked for together, and take no place of the cards that are looked at.
Task<void> CardWatch::lookByName(std::string name, Sight& sight)
{
    NameRounds::Hearing hearing;
    try {
        hearing = co_await rounds.answerOf(name, sight.heardOn);
        if (hearing.answer) {
            hearing.answer = co_await reachableAnswer(network, std::move(name), *std::move(hearing.answer));
        }
    } catch (const Failure& failure) {
        hearing = {std::nullopt, failure};
    }
    if (!hearing.answer) { // a card that is silent over TCP may have got another address where nobody was asked
        if (hearing.unasked) {
            sight.hindrance = std::move(hearing.unasked);
        }
        sight.state = sight.endpoint ? sight.state : CardState::notFound;
        co_return;
    }
    takeAnswer(*hearing.answer, sight);
    if (sight.endpoint && question == Question::versions) {
        co_await lookOverTcp(sight);
    }
}
