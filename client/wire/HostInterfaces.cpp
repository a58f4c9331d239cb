// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/HostInterfaces.h"

#include "client/model/Contains.h"
#include "client/wire/Endpoint.h"

#include <algorithm>
#include <cerrno>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <sys/socket.h>

namespace
{

using InterfaceList = std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)>;

InterfaceList listInterfaces()
{
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) == -1) {
        first = nullptr; // as on a machine without any
    }
    return {first, ::freeifaddrs};
}

in_addr_t numberOf(const sockaddr* address)
{
    return reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr;
}

in_addr_t numberOf(const std::string& address)
{
    return socketAddress({address, 0}).sin_addr.s_addr;
}

// The list names a further address of an interface by a label of its own, if it has one: "eth0:1".
std::string nameOf(const ifaddrs& interface)
{
    const std::string label = interface.ifa_name;
    return label.substr(0, label.find(':'));
}

} // namespace

HostInterfaces::HostInterfaces()
{
    const InterfaceList list = listInterfaces();
    for (const ifaddrs* one = list.get(); one != nullptr; one = one->ifa_next) {
        if (one->ifa_addr == nullptr || one->ifa_addr->sa_family != AF_INET) {
            continue;
        }
        const bool isUp = (one->ifa_flags & IFF_UP) != 0;
        const bool hasBroadcast = (one->ifa_flags & IFF_BROADCAST) != 0;
        const bool hasNetmask = one->ifa_netmask != nullptr;
        entries.push_back({nameOf(*one), isUp, hasBroadcast, numberOf(one->ifa_addr),
                           hasNetmask ? std::optional(numberOf(one->ifa_netmask)) : std::nullopt});
    }
}

bool HostInterfaces::Entry::reaches(std::uint32_t wanted) const
{
    return isUp && netmask && ((address ^ wanted) & *netmask) == 0;
}

bool HostInterfaces::isOnLink(const std::string& interface, const std::string& address) const
{
    const in_addr_t wanted = numberOf(address);
    return std::ranges::any_of(
        entries, [&](const Entry& one) { return one.hasBroadcast && one.reaches(wanted) && one.name == interface; });
}

bool HostInterfaces::isOnLinkAnywhere(const std::string& address) const
{
    const in_addr_t wanted = numberOf(address);
    return std::ranges::any_of(entries, [&](const Entry& one) { return one.hasBroadcast && one.reaches(wanted); });
}

bool HostInterfaces::isInNetworkOf(const std::string& interface, const std::string& address) const
{
    const in_addr_t wanted = numberOf(address);
    return std::ranges::any_of(entries, [&](const Entry& one) { return one.reaches(wanted) && one.name == interface; });
}

bool HostInterfaces::isInAnyNetwork(const std::string& address) const
{
    const in_addr_t wanted = numberOf(address);
    return std::ranges::any_of(entries, [&](const Entry& one) { return one.reaches(wanted); });
}

bool HostInterfaces::isOwnAddress(const std::string& address) const
{
    const in_addr_t wanted = numberOf(address);
    return std::ranges::any_of(entries, [&](const Entry& one) { return one.address == wanted; });
}

std::vector<std::string> HostInterfaces::thatBroadcast() const
{
    return namesOf(true);
}

std::vector<std::string> HostInterfaces::thatAreDown() const
{
    return namesOf(false);
}

// Of those behind which cards may hear a broadcast, or could.
std::vector<std::string> HostInterfaces::namesOf(bool thatAreUp) const
{
    std::vector<std::string> names;
    for (const Entry& one : entries) {
        if (one.hasBroadcast && one.isUp == thatAreUp && !contains(names, one.name)) {
            names.push_back(one.name);
        }
    }
    return names;
}

int bindToInterface(int socket, const std::string& interface)
{
    // Since Linux 5.7 this needs no privilege, as long as the socket is bound to no interface yet.
    const auto size = static_cast<socklen_t>(interface.size());
    return ::setsockopt(socket, SOL_SOCKET, SO_BINDTODEVICE, interface.data(), size) == -1 ? errno : 0;
}
