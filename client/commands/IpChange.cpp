// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/IpChange.h"

#include "client/commands/Exchanges.h"
#include "client/wire/Network.h"

#include <algorithm>

namespace
{

constexpr Seconds restartPause{0.5};             // while a card's network restarts
constexpr Patience oneLook{Seconds(2), 0};       // a slow card takes a second to read its settings
constexpr Patience anotherLook{Seconds(0.5), 0}; // for the answers that come with the first one
constexpr int enoughLooks = 3;                   // at what is stored, for the network to follow

bool hasDhcp(const CardIp& answer)
{
    const std::vector<InterfaceConfig>& interfaces = answer.configuration.interfaces;
    return std::any_of(interfaces.begin(), interfaces.end(),
                       [](const InterfaceConfig& one) { return one.mode == IpMode::dhcp; });
}

bool isHeardAsStated(const CardIp& answer)
{
    const std::vector<InterfaceConfig>& interfaces = answer.configuration.interfaces;
    return std::any_of(interfaces.begin(), interfaces.end(),
                       [&](const InterfaceConfig& one) { return one.address == answer.address; });
}

// The settings alone prove nothing: they are what the card was told, whether its network followed or not. What DHCP
// gave is not known.
bool isContradiction(const CardIp& answer)
{
    return !isHeardAsStated(answer) && !hasDhcp(answer);
}

bool isProof(const CardIp& answer, const InterfaceConfig& wanted)
{
    return wanted.mode == IpMode::dhcp ? !isHeardAsStated(answer) : wanted.address == answer.address;
}

// The other interface answered first: an answer over the changed one says more, the lack of it no more than before.
Task<Proof> lookAtChangedInterface(Context& context, const std::string& card, const InterfaceConfig& wanted)
{
    Proof proof = wanted.mode == IpMode::disabled ? Proof::applied : Proof::stored;
    const auto judge = [&](const CardReply& reply) {
        const CardIp answer{ipConfigurationIn(reply), reply.address, reply.interface};
        if (isContradiction(answer)) {
            proof = Proof::none;
        } else if (isProof(answer, wanted)) {
            proof = Proof::applied;
        } else {
            return false;
        }
        return true;
    };
    try {
        co_await hearCardThat(context, card, judge, anotherLook);
    } catch (const Failure& failure) {
        if (failure.code != ExitCode::noAnswer) {
            co_return Proof::none;
        }
    }
    co_return proof;
}

// None, too, if what came made no sense: a network that restarts gives that.
Task<Proof> look(Context& context, std::string card, InterfaceConfig wanted, std::optional<InterfaceConfig>& seen)
{
    try {
        const CardIp answer = co_await getIpConfiguration(context, card, oneLook);
        const InterfaceConfig* found = answer.configuration.find(wanted.name);
        if (found == nullptr || isContradiction(answer)) {
            co_return Proof::none;
        }
        seen = *found;
        if (seen != wanted) {
            co_return Proof::none;
        }
        if (isProof(answer, wanted)) {
            co_return Proof::applied;
        }
    } catch (const Failure&) {
        co_return Proof::none;
    }
    const Proof proof = co_await lookAtChangedInterface(context, card, wanted);
    co_return proof;
}

} // namespace

Task<bool> sendIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, std::string onlyInterface)
{
    Request request = textRequest(CommandId::ipConfigSet, ipConfigSetXml(card, {wanted}));
    request.changesCard = true;
    ByName how;
    how.onlyInterface = std::move(onlyInterface);
    try {
        co_await context.network.askByName(card, std::move(request), "changing the IP configuration", std::move(how));
    } catch (const Failure& failure) {
        if (failure.code != ExitCode::noAnswer) {
            throw;
        }
        co_return false;
    }
    co_return true;
}

Task<Proof> awaitIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, TimePoint deadline,
                                 std::optional<InterfaceConfig>& seen)
{
    int looksAtStored = 0;
    while (Clock::now() < deadline) {
        const TimePoint next = after(restartPause);
        const Proof proof = co_await look(context, card, wanted, seen);
        looksAtStored += proof == Proof::stored ? 1 : 0;
        if (proof == Proof::applied || looksAtStored == enoughLooks) {
            co_return proof;
        }
        co_await context.loop.until(next); // an answer may come at once, and must not be asked for in a rush
    }
    co_return Proof::none;
}

Task<Proof> forceIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, Seconds time,
                                 std::optional<InterfaceConfig>& seen)
{
    const TimePoint deadline = after(time);
    while (Clock::now() < deadline) {
        co_await sendIpConfiguration(context, card, wanted, "");
        const TimePoint end = std::min(deadline, after(context.network.patience().timeout));
        const Proof proof = co_await awaitIpConfiguration(context, card, wanted, end, seen);
        if (proof != Proof::none) {
            co_return proof;
        }
    }
    co_return Proof::none;
}
