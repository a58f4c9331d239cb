// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identity.h"

#include "client/wire/Phase.h"

#include <fmt/core.h>

namespace
{

// A connection to 0.0.0.0 would end at this host.
Failure addressless(const std::string& card)
{
    return {ExitCode::unreachable, Category::noAddress, "looking for the card",
            fmt::format("{0} hears broadcasts, but has no address on this network; `tarvelctl ip set` or `tarvelctl ip "
                        "rescue {0}` gives it one",
                        card)};
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
    how.anyStatus = true;
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

Endpoint endpointOf(const std::string& card, const std::string& address)
{
    if (address == noAddress) {
        throw addressless(card);
    }
    return Endpoint{address};
}

Task<Endpoint> locate(Network& network, const Target& target)
{
    if (target.endpoint) {
        co_return *target.endpoint;
    }
    std::optional<CardReply> card = target.heard;
    if (!card) {
        card = co_await queryCard(network, target.name);
    }
    co_return endpointOf(target.name, card->address);
}
