// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Census.h"

#include "client/card/Discovery.h"
#include "client/card/HearingOut.h"
#include "client/engine/Parallel.h"
#include "client/model/Contains.h"
#include "client/model/Remedy.h"

#include <algorithm>
#include <cstddef>
#include <fmt/ranges.h>

namespace
{

std::string twoCards(const std::string& address)
{
    return fmt::format("two cards share the address {}: it answered one probe twice", address);
}

std::string severalPlaces(const std::string& address, const std::vector<std::string>& interfaces)
{
    return fmt::format(
        "two cards may share the address {}: it answered on {}; the card's name, or {}, tells them apart", address,
        fmt::join(interfaces, " and on "), wordOf(Remedy::chooseInterface));
}

std::string noWay(const std::string& address, const std::string& interface)
{
    return fmt::format("another card may have the address {}: it answered on {}, which is in no network of it", address,
                       interface);
}

Task<void> askAll(const std::function<Task<void>()>& questions, bool& isOver)
{
    try {
        co_await questions();
    } catch (...) {
        isOver = true; // or whoever listens would do so for ever
        throw;
    }
    isOver = true;
}

} // namespace

Task<void> Census::take(Network& network, std::function<Task<void>()> questions)
{
    // The cheaper one: of the other a card also dumps the header.
    const Request probe = Discovery::makeProbes().first;
    const std::vector<BroadcastSocket> sockets = network.openInterfaces();
    network.broadcast(sockets, probe, Reach::allInterfaces);
    bool isOver = !questions;
    const auto both = [&](std::size_t index) {
        return index == 0 ? listen(network, sockets, probe, isOver) : askAll(questions, isOver);
    };
    const std::size_t tasks = questions ? 2 : 1;
    co_await inParallel(network.eventLoop(), tasks, tasks, both);
}

Task<void> Census::listen(Network& network, const std::vector<BroadcastSocket>& sockets, const Request& probe,
                          const bool& isOver)
{
    for (bool isLast = false; !isLast;) {
        isLast = isOver;
        Listening time(after(HearingOut::moment));
        std::optional<Datagram> datagram = co_await network.receive(sockets, time);
        while (datagram) {
            if (replyIn(*datagram, probe)) {
                note(*datagram);
            }
            datagram = co_await network.receive(sockets, time);
        }
    }
}

int Census::answersFrom(const std::string& address) const
{
    int most = 0;
    for (const auto& [sender, count] : answers) {
        most = sender.first == address ? std::max(most, count) : most;
    }
    return most;
}

std::vector<std::string> Census::hearersOf(const std::string& address) const
{
    std::vector<std::string> interfaces;
    for (const auto& [sender, count] : answers) {
        if (sender.first == address) {
            interfaces.push_back(sender.second);
        }
    }
    return interfaces;
}

Census::Verdict Census::judge(const Endpoint& endpoint, const std::set<Sender>& known, const HostInterfaces& here) const
{
    const std::string& address = endpoint.address;
    // Whatever way a connection takes, it may end at either.
    if (answersFrom(address) > 1) {
        return {twoCards(address)};
    }
    const std::vector<std::string> hearers = hearersOf(address);
    if (!endpoint.interface.empty()) { // whoever has it elsewhere is not reached there
        return {std::nullopt, contains(hearers, endpoint.interface) ? endpoint.interface : ""};
    }
    const auto isKnown = [&](const std::string& interface) { return known.contains({address, interface}); };
    if (hearers.size() > 1 && !std::ranges::all_of(hearers, isKnown)) {
        return {severalPlaces(address, hearers)};
    }
    // Who answers where no connection leads is another than the one that a connection reaches.
    const auto way =
        std::ranges::find_if(hearers, [&](const std::string& one) { return here.isInNetworkOf(one, address); });
    if (way != hearers.end()) {
        return {std::nullopt, *way};
    }
    return hearers.empty() ? Verdict{} : Verdict{noWay(address, hearers.front())};
}
