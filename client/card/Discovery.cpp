// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Discovery.h"

#include <array>

namespace
{

// Chosen: a card answers within milliseconds, and three rounds bear two lost datagrams. A round begins where the one
// before ends.
constexpr Seconds listeningTime{1.2};
constexpr std::array roundEnds = {0.25, 0.75, 1.0}; // of it
// Far from the numbers that commands have and may get, and without the bit of a reply.
constexpr auto unusedCommand = static_cast<CommandId>(0x7FF0);

} // namespace

FoundCard cardAt(const std::string& address, const std::string& interface, const HostInterfaces& here)
{
    return {address, interface, here.isOnLink(interface, address)};
}

std::pair<Request, Request> Discovery::makeProbes()
{
    return {bareRequest(unusedCommand), bareRequest(CommandId::ipConfigGet)};
}

Discovery::Discovery(Network& newNetwork, Report newReport)
    : network(newNetwork), reportCard(std::move(newReport)), probes(makeProbes())
{
}

Task<void> Discovery::run(std::size_t enough)
{
    const std::vector<BroadcastSocket> sockets = network.openInterfaces();
    const Seconds time = network.timeoutOr(listeningTime);
    const TimePoint start = Clock::now();
    for (const double end : roundEnds) {
        network.broadcast(sockets, probes.first);
        network.broadcast(sockets, probes.second);
        const TimePoint deadline = start + std::chrono::duration_cast<Clock::duration>(time * end);
        co_await listen(sockets, deadline, enough);
        if (enough > 0 && heard.size() >= enough) {
            co_return;
        }
    }
}

Task<void> Discovery::listen(const std::vector<BroadcastSocket>& sockets, TimePoint deadline, std::size_t enough)
{
    const HostInterfaces here; // for all who answer in this round
    Listening listening(deadline);
    while (enough == 0 || heard.size() < enough) {
        const std::optional<Datagram> datagram = co_await network.receive(sockets, listening);
        if (!datagram) {
            co_return;
        }
        note(*datagram, here);
    }
}

void Discovery::note(const Datagram& datagram, const HostInterfaces& here)
{
    if (!replyIn(datagram, probes.first) && !replyIn(datagram, probes.second)) {
        return;
    }
    // Each card answers up to six probes.
    if (heard.insert({datagram.interface, datagram.address}).second) {
        reportCard(cardAt(datagram.address, datagram.interface, here));
    }
}
