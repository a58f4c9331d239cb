// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/EventLoop.h"
#include "client/wire/HostInterfaces.h"
#include "client/wire/Network.h"

#include <functional>
#include <set>
#include <string>
#include <utility>

// A card that was heard.
struct FoundCard {
    std::string address;
    std::string interface;  // on which we heard it
    bool reachable = false; // its address belongs to the network of that interface
};

// One that answered from this address.
[[nodiscard]] FoundCard cardAt(const std::string& address, const std::string& interface, const HostInterfaces& here);

// Two probes find cards without knowing their names. A datagram with a command no card knows: each answers to our
// address. An IP configuration get without a text: each refuses it in a broadcast, so that even a card whose address
// is wrong, or that has none, is heard. Each costs a warning in every card's log.
class Discovery
{
public:
    using Report = std::function<void(const FoundCard&)>;

    Discovery(Network& newNetwork, Report newReport);

    // Probes three times in 1.2 seconds, or in the user's time-out, and reports each card once, as early as possible;
    // ends early with `enough` cards (0: never).
    Task<void> run(std::size_t enough);

    // The two probes, made anew: what a dry run shows.
    [[nodiscard]] static std::pair<Request, Request> makeProbes();

private:
    Task<void> listen(const std::vector<BroadcastSocket>& sockets, TimePoint deadline, std::size_t enough);
    void note(const Datagram& datagram, const HostInterfaces& here);

    Network& network;
    Report reportCard;
    std::pair<Request, Request> probes;
    std::set<std::pair<std::string, std::string>> heard; // interface and address
};
