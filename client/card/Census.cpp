// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Census.h"

#include "client/card/Discovery.h"

#include <algorithm>

namespace
{

constexpr Seconds listening{0.3}; // chosen: a card answers within milliseconds

} // namespace

Task<void> Census::take(Network& network)
{
    const Request probe = Discovery::makeProbes().first;
    const std::vector<BroadcastSocket> sockets = network.openInterfaces();
    network.broadcast(sockets, probe);
    Listening time(after(listening));
    for (;;) {
        const std::optional<Datagram> datagram = co_await network.receive(sockets, time);
        if (!datagram) {
            co_return;
        }
        if (replyIn(*datagram, probe)) {
            note(*datagram);
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
