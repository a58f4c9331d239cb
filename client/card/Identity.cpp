// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"

#include "client/model/Remedy.h"
#include "client/wire/Phase.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

Failure addressless(const std::string& card, const CardReply& answer)
{
    const std::string here =
        answer.address == noAddress
            ? "has no address on this network"
            : fmt::format("answers from {} on {}, which is in no network of that interface: whoever is reached there "
                          "may be another",
                          answer.address, answer.interface);
    return {ExitCode::unreachable, Category::noAddress, lookingForCard,
            fmt::format("{0} hears broadcasts, but {1}; `{2}` or `{3} {0}` gives it an address", card, here,
                        wordOf(Remedy::setAddress), wordOf(Remedy::rescueAddress))};
}

} // namespace

bool isFrom(const Reply& reply, const std::string& card)
{
    try {
        return parseIpConfiguration(textOf(reply)).from == card;
    } catch (const Failure&) {
        return true;
    }
}

Task<CardReply> queryCard(Network& network, std::string card, std::optional<RetryPolicy> policy)
{
    const auto any = [](const CardReply& /*answer*/) { return true; };
    CardReply answer = co_await queryCardUntil(network, std::move(card), any, policy);
    co_return answer;
}

Task<CardReply> queryCardUntil(Network& network, std::string card, std::function<bool(const CardReply&)> isWanted,
                               std::optional<RetryPolicy> policy)
{
    ByName how;
    how.isMine = [&](const CardReply& answer) { return isFrom(answer.reply, card) && isWanted(answer); };
    how.policy = policy;
    how.anyStatus = true; // a refusal tells where the card is, too
    Request request = textRequest(CommandId::ipConfigGet, ipConfigGetXml(card));
    CardReply answer = co_await inPhase(waitingForIp, network.askByName(card, std::move(request), std::move(how)));
    co_return answer;
}

IpConfiguration ipConfigurationIn(const CardReply& answer)
{
    return inPhase(waitingForIp, [&] {
        checkStatus(answer.reply.header);
        return parseIpConfiguration(textOf(answer.reply));
    });
}

// A connection to 0.0.0.0 would end at this host, and one to an address of another network at the host that has it
// there.
std::optional<Endpoint> wayTo(const CardReply& answer, const HostInterfaces& here)
{
    if (answer.address == noAddress || !here.isInNetworkOf(answer.interface, answer.address)) {
        return std::nullopt;
    }
    return Endpoint{answer.address, cardPort, answer.interface};
}

void preferReachable(std::vector<CardReply>& answers, const HostInterfaces& here)
{
    std::stable_partition(answers.begin(), answers.end(),
                          [&](const CardReply& answer) { return wayTo(answer, here).has_value(); });
}

Endpoint endpointOf(const std::string& card, const CardReply& answer, const HostInterfaces& here)
{
    std::optional<Endpoint> way = wayTo(answer, here);
    if (!way) {
        throw addressless(card, answer);
    }
    return *std::move(way);
}

// Where the card was heard rather than where its settings say that it is: the network need not follow them.
Endpoint settledEndpoint(const Target& target, const std::vector<CardReply>& answers, const HostInterfaces& here)
{
    for (const CardReply& answer : answers) {
        const std::optional<Endpoint> way = wayTo(answer, here);
        if (way && target.endpoint && target.endpoint->address == way->address) {
            return {way->address, target.endpoint->port, way->interface};
        }
    }
    return endpointOf(target.name, answers.front(), here);
}

// A card with two ports may answer on both from the address of one of them.
Task<CardReply> reachableAnswer(Network& network, std::string card, CardReply first)
{
    if (first.address == noAddress || wayTo(first)) {
        co_return first;
    }
    try {
        const auto isReachable = [](const CardReply& answer) { return wayTo(answer).has_value(); };
        const std::optional<RetryPolicy> ofTheUser;
        CardReply answer = co_await queryCardUntil(network, std::move(card), isReachable, ofTheUser);
        co_return answer;
    } catch (const Failure& failure) {
        if (isOfThisMachine(failure)) {
            throw;
        }
    }
    co_return first;
}

Task<Endpoint> locate(Network& network, const Target& target)
{
    if (target.endpoint) {
        co_return *target.endpoint;
    }
    if (target.heard) {
        co_return endpointOf(target.name, *target.heard);
    }
    const CardReply first = co_await queryCard(network, target.name);
    const CardReply card = co_await reachableAnswer(network, target.name, first);
    co_return endpointOf(target.name, card);
}
