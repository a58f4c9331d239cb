// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/commands/IpChange.h"

#include "client/commands/Exchanges.h"
#include "client/wire/Network.h"

#include <algorithm>

namespace
{

constexpr Seconds restartPause{0.5};       // while a card's network restarts
constexpr Patience oneLook{Seconds(2), 0}; // a slow card takes a second to read its settings

// The settings alone prove nothing: they are what the card was told, whether its network followed or not. What DHCP
// gave is not known.
bool isHeardWhereItSays(const CardIp& answer)
{
    const std::vector<InterfaceConfig>& interfaces = answer.configuration.interfaces;
    return std::any_of(interfaces.begin(), interfaces.end(), [&](const InterfaceConfig& one) {
        return one.mode == IpMode::dhcp || one.address == answer.address;
    });
}

// Nothing, too, if what came made no sense: a network that restarts gives that.
Task<std::optional<InterfaceConfig>> peek(Context& context, std::string card, std::string interface)
{
    try {
        const CardIp answer = co_await getIpConfiguration(context, card, oneLook);
        const InterfaceConfig* found = answer.configuration.find(interface);
        co_return found != nullptr&& isHeardWhereItSays(answer) ? std::optional(*found) : std::nullopt;
    } catch (const Failure&) {
    }
    co_return std::nullopt;
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

Task<bool> awaitIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, TimePoint deadline,
                                std::optional<InterfaceConfig>& seen)
{
    while (Clock::now() < deadline) {
        const TimePoint next = after(restartPause);
        std::optional<InterfaceConfig> answer = co_await peek(context, card, wanted.name);
        if (answer) {
            seen = std::move(answer);
        }
        if (seen == wanted) {
            co_return true;
        }
        co_await context.loop.until(next); // an answer may come at once, and must not be asked for in a rush
    }
    co_return false;
}

Task<bool> forceIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, Seconds time,
                                std::optional<InterfaceConfig>& seen)
{
    const TimePoint deadline = after(time);
    while (Clock::now() < deadline) {
        co_await sendIpConfiguration(context, card, wanted, "");
        const TimePoint end = std::min(deadline, after(context.network.patience().timeout));
        const bool there = co_await awaitIpConfiguration(context, card, wanted, end, seen);
        if (there) {
            co_return true;
        }
    }
    co_return false;
}
