// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Neighbour.h"

#include "client/engine/Descriptor.h"
#include "client/wire/Endpoint.h"
#include "client/wire/HostInterfaces.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace
{

constexpr std::uint16_t discardPort = 9;
constexpr Seconds glance{0.05};     // between two looks into the table; chosen
constexpr Seconds confirmation{10}; // the kernel uses an old entry for 5 seconds before it asks, 3 times in 3 seconds
constexpr std::size_t tableSpace = 32768;

// What the table says of an address. An old entry may be that of a host which has gone.
enum class State { none, old, confirmed };

struct Entry {
    State state = State::none;
    std::string linkAddress; // its bytes
};

struct TableRequest {
    nlmsghdr header;
    ndmsg body;
};

Descriptor openTable()
{
    Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    TableRequest request = {};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETNEIGH;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.body.ndm_family = AF_INET;
    const bool sent = socket && ::send(socket.get(), &request, sizeof request, 0) == sizeof request;
    return sent ? std::move(socket) : Descriptor();
}

State stateOf(const ndmsg& neighbour)
{
    constexpr unsigned confirmed = NUD_REACHABLE | NUD_PERMANENT;
    constexpr unsigned old = NUD_STALE | NUD_DELAY | NUD_PROBE;
    if ((neighbour.ndm_state & confirmed) != 0) {
        return State::confirmed;
    }
    return (neighbour.ndm_state & old) != 0 ? State::old : State::none;
}

std::string attributeOf(const nlmsghdr& message, unsigned short type)
{
    auto size = static_cast<int>(NLMSG_PAYLOAD(&message, sizeof(ndmsg)));
    const auto* attribute = reinterpret_cast<const rtattr*>(static_cast<const ndmsg*>(NLMSG_DATA(&message)) + 1);
    for (; RTA_OK(attribute, size); attribute = RTA_NEXT(attribute, size)) {
        if (attribute->rta_type == type) {
            return {static_cast<const char*>(RTA_DATA(attribute)), RTA_PAYLOAD(attribute)};
        }
    }
    return {};
}

// Looks for an address in one part of the table; false after the last part. Several interfaces may have an entry: the
// best counts.
bool searchPart(const void* bytes, std::size_t size, const std::string& wanted, Entry& best)
{
    const auto* message = static_cast<const nlmsghdr*>(bytes);
    for (; NLMSG_OK(message, size); message = NLMSG_NEXT(message, size)) {
        if (message->nlmsg_type != RTM_NEWNEIGH) {
            return false;
        }
        const State state = stateOf(*static_cast<const ndmsg*>(NLMSG_DATA(message)));
        if (state > best.state && attributeOf(*message, NDA_DST) == wanted) {
            best = {state, attributeOf(*message, NDA_LLADDR)};
        }
    }
    return true;
}

// The kernel answers at once, so that nothing here waits for the network.
Entry lookUp(in_addr address)
{
    const std::string wanted(reinterpret_cast<const char*>(&address), sizeof address);
    const Descriptor table = openTable();
    alignas(nlmsghdr) std::array<std::byte, tableSpace> space;
    Entry best;
    for (bool isMore = static_cast<bool>(table); isMore;) {
        const ssize_t size = ::recv(table.get(), space.data(), space.size(), 0);
        isMore = size > 0 && searchPart(space.data(), static_cast<std::size_t>(size), wanted, best);
    }
    return best;
}

void sendNothing(const sockaddr_in& to)
{
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    ::sendto(socket.get(), nullptr, 0, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

Task<Entry> resolve(const Wire& wire, std::string address, State enough, TimePoint deadline)
{
    const sockaddr_in to = socketAddress({address, discardPort});
    sendNothing(to);
    for (;;) {
        const Entry entry = lookUp(to.sin_addr);
        if (entry.state >= enough || Clock::now() >= deadline) {
            co_return entry;
        }
        co_await wire.loop.until(after(glance));
    }
}

} // namespace

Task<std::optional<bool>> seekNeighbour(const Wire& wire, std::string address, std::string besides, Seconds time)
{
    if (!wire.gate.admitsProbes() || !isOnLinkAnywhere(address)) {
        co_return std::nullopt;
    }
    std::string known;
    if (isOnLinkAnywhere(besides)) {
        const Entry own = co_await resolve(wire, besides, State::old, after(time));
        known = own.linkAddress;
    }
    Entry entry = co_await resolve(wire, address, State::old, after(time));
    const bool isKnown = !known.empty() && entry.linkAddress == known;
    if (entry.state == State::old && !isKnown) {
        entry = co_await resolve(wire, address, State::confirmed, after(confirmation));
    }
    co_return std::optional(entry.state != State::none && !isKnown);
}
