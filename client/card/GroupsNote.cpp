// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/GroupsNote.h"

#include "client/card/Ambiguity.h"
#include "client/card/Identity.h"
#include "client/model/Remedy.h"
#include "client/wire/HostInterfaces.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

// What leads nowhere from here, or to another, is no address to write down.
std::string rightLine(const std::string& name, const std::vector<CardReply>& answers)
{
    for (const CardReply& answer : answers) {
        if (const std::optional<Endpoint> way = wayTo(answer)) {
            return fmt::format("The right line is \"{} {}\"", name, way->address);
        }
    }
    return "It has no address here that could stand there";
}

} // namespace

Failure staleNote(const Target& target, const std::vector<CardReply>& answers)
{
    return {ExitCode::ambiguous, Category::ambiguous, lookingForCard,
            fmt::format("the groups file says that {} is at {}, but it answered from {}; nothing was sent, also with "
                        "{}. {}",
                        target.name, target.endpoint->address, sendersOf(answers), wordOf(Remedy::goOnAllTheSame),
                        rightLine(target.name, answers))};
}

Failure notHeard(const Target& target, const Failure& silence)
{
    return {silence.code, silence.category, silence.phase,
            fmt::format("only the groups file says where {} is: {}. {} believes the file", target.name, silence.hint,
                        wordOf(Remedy::believeGroups))};
}

Failure severalNames(const std::string& doubt)
{
    return {ExitCode::ambiguous, Category::ambiguous, lookingForCard,
            fmt::format("{}; nothing was sent, also with {}. Give the name that is meant", doubt,
                        wordOf(Remedy::goOnAllTheSame))};
}

Task<std::optional<CardReply>> confirmNote(Network& network, Target target)
{
    const std::string& noted = target.endpoint->address;
    const HostInterfaces here;
    const auto leadsThere = [&](const BroadcastSocket& socket) {
        return here.isInNetworkOf(socket.interface(), noted);
    };
    if (std::ranges::none_of(network.openInterfaces(), leadsThere)) {
        co_return std::nullopt;
    }
    try {
        const auto isThere = [&](const CardReply& answer) { return answer.address == noted; };
        const std::optional<RetryPolicy> ofTheUser;
        CardReply answer = co_await queryCardUntil(network, target.name, isThere, ofTheUser);
        co_return answer;
    } catch (const Failure& failure) {
        if (isOfThisMachine(failure)) {
            throw;
        }
    }
    throw Failure(staleNote(target, {*target.heard})); // its settings may say so, but it is silent there
}
