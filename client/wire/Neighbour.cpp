// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Neighbour.h"

#include "client/engine/Descriptor.h"
#include "client/wire/Endpoint.h"
#include "client/wire/HostInterfaces.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fmt/core.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <set>
#include <sys/socket.h>

namespace
{

constexpr std::uint16_t discardPort = 9; // nobody listens there; that something is sent is all
constexpr Seconds glance{0.05};          // between two looks into the table; chosen
constexpr Seconds confirmation{10}; // the kernel uses an old entry for 5 seconds before it asks, 3 times in 3 seconds
constexpr std::size_t tableSpace = 32768; // the most that the kernel puts into one part of an answer

// What the table says of an address: nothing, that it is or was asked for, or who has it. An old entry may be that of a
// host which has gone. In the order of what they are worth, since they are compared.
enum class State { none, asked, old, confirmed };

struct Entry {
    State state = State::none;
    std::string linkAddress = {}; // its bytes
    int error = 0;                // why the table could not be read
};

struct TableRequest {
    nlmsghdr header;
    ndmsg body;
};

// The whole table: who asks the kernel for one address must name the interface, too.
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
    constexpr unsigned asked = NUD_INCOMPLETE | NUD_FAILED;
    if ((neighbour.ndm_state & confirmed) != 0) {
        return State::confirmed;
    }
    if ((neighbour.ndm_state & old) != 0) {
        return State::old;
    }
    return (neighbour.ndm_state & asked) != 0 ? State::asked : State::none;
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
            best.error = message->nlmsg_type == NLMSG_DONE ? 0 : EPROTO;
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
    ssize_t size = table ? 1 : -1;
    for (bool isMore = size > 0; isMore;) {
        size = ::recv(table.get(), space.data(), space.size(), 0);
        isMore = size > 0 && searchPart(space.data(), static_cast<std::size_t>(size), wanted, best);
    }
    if (size <= 0) {
        best.error = errno;
    }
    return best;
}

// An error, or 0.
int sendNothing(const sockaddr_in& to)
{
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const bool sent =
        socket && ::sendto(socket.get(), nullptr, 0, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0;
    return sent ? 0 : errno;
}

// `wasThere`: the table had an entry already. One that goes was asked for in vain, and forgotten then.
Task<Entry> watchTable(const Wire& wire, in_addr address, State enough, TimePoint deadline, bool wasThere = false)
{
    for (;;) {
        Entry entry = lookUp(address);
        if (entry.state == State::none && wasThere) {
            entry.state = State::asked;
        }
        wasThere = entry.state != State::none;
        if (entry.state >= enough || Clock::now() >= deadline) {
            co_return entry;
        }
        co_await wire.loop.until(after(glance));
    }
}

// The link-layer addresses of those that answer in time.
Task<std::set<std::string>> linkAddressesOf(const Wire& wire, std::vector<std::string> addresses, TimePoint deadline)
{
    const HostInterfaces here;
    std::erase_if(addresses, [&](const std::string& address) { return !here.isOnLinkAnywhere(address); });
    for (const std::string& address : addresses) {
        sendNothing(socketAddress({address, discardPort}));
    }
    std::set<std::string> known;
    for (const std::string& address : addresses) {
        const in_addr number = socketAddress({address, discardPort}).sin_addr;
        // An old entry will do: all that is wanted of it is whose it was.
        const Entry entry = co_await watchTable(wire, number, State::old, deadline);
        if (!entry.linkAddress.empty()) {
            known.insert(entry.linkAddress);
        }
    }
    co_return known;
}

Neighbour unknown(std::string why)
{
    return {Neighbour::State::unknown, std::move(why)};
}

Neighbour neighbourIn(const Entry& entry, bool isKnown)
{
    if (entry.state >= State::old) {
        return {isKnown ? Neighbour::State::absent : Neighbour::State::present};
    }
    if (entry.error != 0) {
        return unknown(fmt::format("this machine's table of neighbours cannot be read: {}", ::strerror(entry.error)));
    }
    if (entry.state == State::none) {
        return unknown("this machine asked nobody for it on its network, as where its route leads elsewhere");
    }
    return {Neighbour::State::absent};
}

} // namespace

Task<Neighbour> seekNeighbour(const Wire& wire, std::string address, std::vector<std::string> besides, Seconds time)
{
    // Behind a router the kernel would look for the router, and find it.
    if (!wire.gate.admitsProbes() || !HostInterfaces().isOnLinkAnywhere(address)) {
        co_return unknown("it is in none of this machine's networks, or nothing may be sent");
    }
    const std::set<std::string> known = co_await linkAddressesOf(wire, std::move(besides), after(time));
    const sockaddr_in to = socketAddress({address, discardPort});
    if (const int error = sendNothing(to); error != 0) {
        co_return unknown(fmt::format("nothing could be sent to it: {}", ::strerror(error)));
    }
    Entry entry = co_await watchTable(wire, to.sin_addr, State::old, after(time));
    const bool isKnown = known.contains(entry.linkAddress);
    if (entry.state == State::old && !isKnown) {
        sendNothing(to); // the kernel confirms only what it has something to send to
        entry = co_await watchTable(wire, to.sin_addr, State::confirmed, after(confirmation), true);
    }
    co_return neighbourIn(entry, isKnown);
}
