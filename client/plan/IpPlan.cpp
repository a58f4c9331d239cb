// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/IpPlan.h"

#include "client/model/Failure.h"
#include "client/model/Ipv4.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

Ipv4 requireAddress(std::string_view text, std::string_view what)
{
    const std::optional<Ipv4> address = parseIpv4(text);
    if (!address || !isHostAddress(*address)) {
        throw usageFailure(fmt::format("the {} \"{}\" is no address that a card could have", what, text));
    }
    return *address;
}

Ipv4 requireMask(std::string_view text)
{
    const std::optional<int> length = prefixLengthIn(text);
    const std::optional<Ipv4> mask = length ? maskOfPrefix(*length) : parseIpv4(text);
    // From /1 to /30: a longer one leaves no address between the first of its network and the last.
    if (!mask || !isMask(*mask) || *mask < 0x80000000 || *mask > 0xFFFFFFFC) {
        throw usageFailure(
            fmt::format("\"{}\" is no netmask for a card: it is a prefix length from 1 to 30, or such as "
                        "255.255.255.0",
                        text));
    }
    return *mask;
}

void requireHostPart(Ipv4 address, Ipv4 mask, std::string_view what)
{
    const Ipv4 host = address & ~mask;
    if (host == 0 || host == ~mask) {
        throw usageFailure(fmt::format("the {} {} is the {} address of its network", what, formatIpv4(address),
                                       host == 0 ? "first, network" : "broadcast"));
    }
}

void requireGateway(Ipv4 gateway, Ipv4 address, Ipv4 mask)
{
    requireHostPart(gateway, mask, "gateway");
    // A card would take it, and reach nobody beyond its network.
    if (((gateway ^ address) & mask) != 0) {
        throw usageFailure(
            fmt::format("the gateway {} is outside the network of {}", formatIpv4(gateway), formatIpv4(address)));
    }
    if (gateway == address) {
        throw usageFailure("the gateway is the card itself");
    }
}

std::optional<Ipv4> numberOf(const std::optional<std::string>& text)
{
    return text ? parseIpv4(*text) : std::nullopt;
}

// A change can be undone if what the card has now can be said in a request.
std::string reasonForNoRollback(const std::optional<InterfaceConfig>& now)
{
    if (!now) {
        return "the card refused to tell its present configuration";
    }
    if (now->mode != IpMode::fixed) {
        return "";
    }
    if (addressesOf(*now).size() > 1) {
        return "the card's interface has several addresses, which no request can express";
    }
    if (!now->netmask) {
        return "the card's interface is static without a netmask, which no request can express";
    }
    if (!numberOf(now->address) || !numberOf(now->netmask) || (now->gateway && !numberOf(now->gateway))) {
        return "the card's present addresses are not well formed, so it would refuse them";
    }
    return "";
}

void addLosses(std::vector<std::string>& effects, const InterfaceConfig& now, const InterfaceConfig& wanted)
{
    const auto loses = [&](const char* what, const std::optional<std::string>& had,
                           const std::optional<std::string>& gets) {
        if (had && !gets) {
            effects.push_back(fmt::format("the {} {} of {} will be deleted", what, *had, wanted.name));
        }
    };
    const std::vector<std::string> addresses = addressesOf(now);
    if (addresses.size() > 1) {
        effects.push_back(fmt::format("all {} addresses of {} ({}) will be deleted", addresses.size(), wanted.name,
                                      fmt::join(addresses, ", ")));
    } else {
        loses("address", now.address, wanted.address);
    }
    loses("netmask", now.netmask, wanted.netmask);
    loses("gateway", now.gateway, wanted.gateway);
}

// A card with both ports in one network may answer over either, and looks like two.
void addOverlap(std::vector<std::string>& effects, const InterfaceConfig& other, const InterfaceConfig& wanted)
{
    const std::optional<Ipv4> address = numberOf(wanted.address);
    const std::optional<Ipv4> mask = numberOf(wanted.netmask);
    for (const std::string& text : addressesOf(other)) {
        const std::optional<Ipv4> otherAddress = parseIpv4(text);
        if (address && mask && otherAddress && ((*address ^ *otherAddress) & *mask) == 0) {
            effects.push_back(fmt::format("{} ({}) will be in the same network", other.name, text));
        }
    }
}

void refuseBothDisabled(const InterfaceConfig& other, const InterfaceConfig& wanted)
{
    if (wanted.mode == IpMode::disabled && other.mode == IpMode::disabled) {
        throw usageFailure( // here, because the card's refusal would be only a status 2
            fmt::format("{} is disabled already: a card refuses to disable both interfaces", other.name));
    }
}

} // namespace

void requireInterfaceName(std::string_view name)
{
    if (name != "VemkEth1" && name != "VemkEth2") {
        throw usageFailure(fmt::format("\"{}\" is no interface of a card: VemkEth1 or VemkEth2", name));
    }
}

InterfaceConfig parseStatic(std::string_view interface, std::string_view text)
{
    const std::size_t comma = text.find(',');
    const std::string_view network = text.substr(0, comma);
    const std::size_t slash = network.find('/');
    if (slash == std::string_view::npos) {
        throw usageFailure(fmt::format("\"{}\" has no netmask; write 10.0.0.11/24", network));
    }
    const Ipv4 address = requireAddress(network.substr(0, slash), "address");
    const Ipv4 mask = requireMask(network.substr(slash + 1));
    requireHostPart(address, mask, "address");
    InterfaceConfig config{std::string(interface), IpMode::fixed, formatIpv4(address), formatIpv4(mask), std::nullopt};
    if (comma != std::string_view::npos) {
        const Ipv4 gateway = requireAddress(text.substr(comma + 1), "gateway");
        requireGateway(gateway, address, mask);
        config.gateway = formatIpv4(gateway);
    }
    return config;
}

IpPlan planIp(const std::optional<IpConfiguration>& now, InterfaceConfig wanted)
{
    IpPlan plan;
    plan.wanted = std::move(wanted);
    if (now) {
        for (const InterfaceConfig& interface : now->interfaces) {
            if (interface.name == plan.wanted.name) {
                plan.now = interface;
                addLosses(plan.effects, interface, plan.wanted);
            } else {
                refuseBothDisabled(interface, plan.wanted);
                addOverlap(plan.effects, interface, plan.wanted);
            }
        }
    }
    plan.noRollback = reasonForNoRollback(plan.now);
    if (plan.noRollback.empty()) {
        // Planned now, since a card that is lost can no longer be asked what it had.
        plan.rollback = plan.now;
    }
    if (!plan.nothingToDo()) {
        plan.effects.emplace_back("the card's network restarts");
        // Whoever staged them: the card commits all that is staged, and nobody here can see what that is.
        plan.effects.emplace_back("staged settings, such as an NTP server, are committed along");
    }
    return plan;
}

std::string describe(const InterfaceConfig& interface)
{
    std::string text(wordOf(interface.mode));
    if (interface.address) {
        text += " " + *interface.address;
    }
    if (interface.netmask) {
        text += "/" + *interface.netmask;
    }
    if (interface.gateway) {
        text += " gateway " + *interface.gateway;
    }
    return text;
}
