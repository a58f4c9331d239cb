// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/BroadcastSocket.h"

#include "client/wire/Endpoint.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fmt/core.h>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <sys/socket.h>

namespace
{

constexpr std::size_t largestDatagram = 65536;

Failure unusable(const std::string& name, int error)
{
    return {ExitCode::unreachable, "no-interface", "opening a socket",
            fmt::format("cannot broadcast on {}: {}", name, ::strerror(error))};
}

void setOption(const Descriptor& socket, int option, const void* value, std::size_t size, const std::string& name)
{
    if (::setsockopt(socket.get(), SOL_SOCKET, option, value, static_cast<socklen_t>(size)) == -1) {
        throw unusable(name, errno);
    }
}

Descriptor openSocket(const std::string& name)
{
    Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) {
        throw unusable(name, errno);
    }
    const int on = 1;
    setOption(socket, SO_BROADCAST, &on, sizeof on, name);
    setOption(socket, SO_BINDTODEVICE, name.data(), name.size(), name);
    const sockaddr_in anywhere = socketAddress({"0.0.0.0", 0});
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&anywhere), sizeof anywhere) == -1) {
        throw unusable(name, errno);
    }
    return socket;
}

std::uint16_t portOf(const Descriptor& socket)
{
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&own), &size);
    return ntohs(own.sin_port);
}

using InterfaceList = std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)>;

InterfaceList listInterfaces()
{
    ifaddrs* first = nullptr;
    if (::getifaddrs(&first) == -1) {
        first = nullptr;
    }
    return {first, ::freeifaddrs};
}

in_addr_t numberOf(const sockaddr* address)
{
    return reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr;
}

bool canBroadcast(const ifaddrs& interface)
{
    constexpr unsigned wanted = IFF_UP | IFF_BROADCAST;
    return (interface.ifa_flags & wanted) == wanted && interface.ifa_addr != nullptr &&
           interface.ifa_addr->sa_family == AF_INET;
}

} // namespace

BroadcastSocket::BroadcastSocket(std::string newInterface) : name(std::move(newInterface)), socket(openSocket(name))
{
    if (portOf(socket) == cardPort) { // the kernel may choose it, and every card would log each reply
        socket = openSocket(name);    // the first is still open meanwhile, so this one gets another
    }
}

bool BroadcastSocket::broadcast(std::span<const std::byte> bytes) const
{
    const sockaddr_in everybody = socketAddress({"255.255.255.255", cardPort});
    return ::sendto(socket.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&everybody),
                    sizeof everybody) == static_cast<ssize_t>(bytes.size());
}

std::optional<Datagram> BroadcastSocket::receive() const
{
    std::array<std::byte, largestDatagram> space;
    sockaddr_in sender = {};
    socklen_t size = sizeof sender;
    const ssize_t received =
        ::recvfrom(socket.get(), space.data(), space.size(), 0, reinterpret_cast<sockaddr*>(&sender), &size);
    if (received == -1) {
        return std::nullopt; // none there; an error of an earlier sending is only that
    }
    return Datagram{{space.begin(), space.begin() + received}, dotted(sender.sin_addr), ntohs(sender.sin_port), name};
}

std::vector<std::string> broadcastInterfaces()
{
    const InterfaceList list = listInterfaces();
    std::vector<std::string> names;
    for (const ifaddrs* one = list.get(); one != nullptr; one = one->ifa_next) {
        if (canBroadcast(*one) && std::find(names.begin(), names.end(), one->ifa_name) == names.end()) {
            names.emplace_back(one->ifa_name);
        }
    }
    return names;
}

bool isOnLink(const std::string& interface, const std::string& address)
{
    const in_addr_t wanted = socketAddress({address, 0}).sin_addr.s_addr;
    const InterfaceList list = listInterfaces();
    for (const ifaddrs* one = list.get(); one != nullptr; one = one->ifa_next) {
        if (interface == one->ifa_name && canBroadcast(*one) && one->ifa_netmask != nullptr &&
            ((numberOf(one->ifa_addr) ^ wanted) & numberOf(one->ifa_netmask)) == 0) {
            return true;
        }
    }
    return false;
}
