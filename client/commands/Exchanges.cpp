// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/Exchanges.h"

#include "client/wire/Network.h"

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

} // namespace

Task<CardReply> hearCard(Context& context, std::string card, std::optional<Patience> patience)
{
    ByName how;
    how.isMine = [&card](const Reply& reply) { return isFrom(reply, card); };
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
    const CardIp card = co_await getIpConfiguration(context, target.name);
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
