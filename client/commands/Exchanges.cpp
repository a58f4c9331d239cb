// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Exchanges.h"

#include "client/wire/Network.h"

#include <fmt/core.h>

namespace
{

constexpr const char* waitingForIp = "waiting for the IP configuration";

// A reply whose text cannot be read is taken for the wanted card's; reading it again then tells what is wrong.
bool isFrom(const Reply& reply, const std::string& card)
{
    try {
        return parseIpConfiguration(textOf(reply, ""), "").from == card;
    } catch (const Failure&) {
        return true;
    }
}

// A connection to 0.0.0.0 would end at this host.
Failure addressless(const std::string& card)
{
    return {ExitCode::unreachable, "no-address", "looking for the card",
            fmt::format("{0} hears broadcasts, but has no address on this network; `tarvelctl ip set` or `tarvelctl ip "
                        "rescue {0}` gives it one",
                        card)};
}

} // namespace

Task<CardReply> hearCard(Context& context, std::string card, std::optional<Patience> patience)
{
    const auto any = [](const CardReply& /*answer*/) { return true; };
    CardReply answer = co_await hearCardThat(context, std::move(card), any, patience);
    co_return answer;
}

Task<CardReply> hearCardThat(Context& context, std::string card, std::function<bool(const CardReply&)> isWanted,
                             std::optional<Patience> patience)
{
    ByName how;
    how.isMine = [&](const CardReply& answer) { return isFrom(answer.reply, card) && isWanted(answer); };
    how.patience = patience;
    how.anyStatus = true;
    CardReply answer = co_await context.network.askByName(
        card, textRequest(CommandId::ipConfigGet, ipConfigGetXml(card)), waitingForIp, std::move(how));
    co_return answer;
}

IpConfiguration ipConfigurationIn(const CardReply& answer)
{
    checkStatus(answer.reply.header, waitingForIp);
    return parseIpConfiguration(textOf(answer.reply, waitingForIp), waitingForIp);
}

Task<CardIp> getIpConfiguration(Context& context, std::string card, std::optional<Patience> patience)
{
    const CardReply answer = co_await hearCard(context, std::move(card), patience);
    co_return CardIp{ipConfigurationIn(answer), answer.address, answer.interface};
}

Task<Endpoint> locate(Context& context, const Target& target)
{
    if (target.endpoint) {
        co_return *target.endpoint;
    }
    const CardReply card = co_await hearCard(context, target.name);
    if (card.address == noAddress) {
        throw addressless(target.name);
    }
    co_return Endpoint{card.address};
}

Task<Versions> getVersions(Context& context, Endpoint endpoint)
{
    const std::string phase = "waiting for the versions report";
    const Reply reply = co_await context.network.ask(std::move(endpoint), bareRequest(CommandId::versions), phase);
    co_return parseVersions(textOf(reply, phase), phase);
}

Task<TimeReference> getTimeReference(Context& context, Endpoint endpoint)
{
    const std::string phase = "waiting for the time reference";
    const Reply reply =
        co_await context.network.ask(std::move(endpoint), bareRequest(CommandId::timeReferenceGet), phase);
    co_return parseTimeReference(textOf(reply, phase), phase);
}
