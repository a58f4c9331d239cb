// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/HostInterfaces.h"

#include "client/wire/Endpoint.h"

#include <algorithm>
#include <cerrno>
#include <functional>
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

// Leaves out the loopback device and tunnels, behind which no card hears a broadcast.
bool canBroadcastOnceUp(const ifaddrs& interface)
{
    return (interface.ifa_flags & IFF_BROADCAST) != 0 && interface.ifa_addr != nullptr &&
           interface.ifa_addr->sa_family == AF_INET;
}

bool isUp(const ifaddrs& interface)
{
    return (interface.ifa_flags & IFF_UP) != 0;
}

bool canBroadcast(const ifaddrs& interface)
{
    return isUp(interface) && canBroadcastOnceUp(interface);
}

// The list names a further address of an interface by a label of its own, if it has one: "eth0:1".
std::string nameOf(const ifaddrs& interface)
{
    const std::string label = interface.ifa_name;
    return label.substr(0, label.find(':'));
}

in_addr_t numberOf(const std::string& address)
{
    return socketAddress({address, 0}).sin_addr.s_addr;
}

bool reaches(const ifaddrs& interface, in_addr_t wanted)
{
    return isUp(interface) && interface.ifa_addr != nullptr && interface.ifa_addr->sa_family == AF_INET &&
           interface.ifa_netmask != nullptr &&
           ((numberOf(interface.ifa_addr) ^ wanted) & numberOf(interface.ifa_netmask)) == 0;
}

bool hasInterface(const std::function<bool(const ifaddrs&)>& isWanted)
{
    const InterfaceList list = listInterfaces();
    for (const ifaddrs* one = list.get(); one != nullptr; one = one->ifa_next) {
        if (isWanted(*one)) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> namesOf(const std::function<bool(const ifaddrs&)>& isWanted)
{
    const InterfaceList list = listInterfaces();
    std::vector<std::string> names;
    for (const ifaddrs* one = list.get(); one != nullptr; one = one->ifa_next) {
        // The list has an interface once for each of its addresses.
        if (isWanted(*one) && std::find(names.begin(), names.end(), nameOf(*one)) == names.end()) {
            names.push_back(nameOf(*one));
        }
    }
    return names;
}

} // namespace

std::vector<std::string> broadcastInterfaces()
{
    return namesOf(canBroadcast);
}

std::vector<std::string> interfacesThatAreDown()
{
    return namesOf([](const ifaddrs& one) { return !isUp(one) && canBroadcastOnceUp(one); });
}

bool isOnLink(const std::string& interface, const std::string& address)
{
    return hasInterface([&](const ifaddrs& one) {
        return interface == nameOf(one) && canBroadcast(one) && reaches(one, numberOf(address));
    });
}

bool isInNetworkOf(const std::string& interface, const std::string& address)
{
    return hasInterface(
        [&](const ifaddrs& one) { return interface == nameOf(one) && reaches(one, numberOf(address)); });
}

bool isInAnyNetwork(const std::string& address)
{
    return hasInterface([&](const ifaddrs& one) { return reaches(one, numberOf(address)); });
}

bool isOnLinkAnywhere(const std::string& address)
{
    return hasInterface([&](const ifaddrs& one) { return canBroadcast(one) && reaches(one, numberOf(address)); });
}

bool isOwnAddress(const std::string& address)
{
    return hasInterface([&](const ifaddrs& one) {
        return one.ifa_addr != nullptr && one.ifa_addr->sa_family == AF_INET &&
               numberOf(one.ifa_addr) == numberOf(address);
    });
}

int bindToInterface(int socket, const std::string& interface)
{
    // Since Linux 5.7 this needs no privilege, as long as the socket is bound to no interface yet.
    const auto size = static_cast<socklen_t>(interface.size());
    return ::setsockopt(socket, SOL_SOCKET, SO_BINDTODEVICE, interface.data(), size) == -1 ? errno : 0;
}
