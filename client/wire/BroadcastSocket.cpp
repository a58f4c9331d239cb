// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/BroadcastSocket.h"

#include "client/wire/Endpoint.h"
#include "client/wire/HostInterfaces.h"
#include "client/wire/ReceiveBuffer.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fmt/core.h>
#include <sys/socket.h>

namespace
{

// Nothing is ever cut, so that what came too long is seen to be.
constexpr std::size_t largestDatagram = 65536;

Failure unusable(const std::string& name, int error)
{
    const bool isMissing = error == ENODEV;
    return {isMissing ? ExitCode::unreachable : ExitCode::internal,
            isMissing ? Category::noInterface : Category::noSocket, "opening a socket",
            fmt::format("cannot broadcast on {}: {}", name, ::strerror(error))};
}

Descriptor openSocket(const std::string& name)
{
    Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) {
        throw unusable(name, errno);
    }
    enlargeReceiveBuffer(socket.get());
    const int on = 1;
    if (::setsockopt(socket.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == -1) {
        throw unusable(name, errno);
    }
    if (const int error = bindToInterface(socket.get(), name); error != 0) {
        throw unusable(name, error);
    }
    // Not to an address of the interface: the kernel gives no socket that is bound to one what is sent to
    // 255.255.255.255.
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

} // namespace

BroadcastSocket::BroadcastSocket(const Wire& newWire, std::string newInterface)
    : wire(&newWire), lost(newWire.lost), name(std::move(newInterface)), socket(openSocket(name))
{
    if (portOf(socket) == cardPort) { // the kernel may choose it, and every card would log each reply
        socket = openSocket(name);    // the first is still open meanwhile, so this one gets another
    }
}

BroadcastSocket::~BroadcastSocket()
{
    if (socket) { // and was not handed on
        lost->add(socket.get());
    }
}

bool BroadcastSocket::broadcast(const Request& request) const
{
    wire->gate.admit(request);
    const Bytes bytes = encode(request);
    // Not the broadcast address of our network: a card with an address of another one, or with none, takes only this.
    const sockaddr_in everybody = socketAddress({"255.255.255.255", cardPort});
    if (::sendto(socket.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&everybody),
                 sizeof everybody) != static_cast<ssize_t>(bytes.size())) {
        return false;
    }
    wire->show(name, Direction::sent, bytes);
    return true;
}

std::optional<Datagram> BroadcastSocket::receive() const
{
    std::array<std::byte, largestDatagram> space;
    sockaddr_in sender = {};
    socklen_t size = sizeof sender;
    const ssize_t received =
        ::recvfrom(socket.get(), space.data(), space.size(), 0, reinterpret_cast<sockaddr*>(&sender), &size);
    if (received == -1) {
        return std::nullopt; // none there, or an error of an earlier sending, which says nothing of what may come
    }
    Datagram datagram{{space.begin(), space.begin() + received}, dotted(sender.sin_addr), ntohs(sender.sin_port), name};
    wire->show(datagram.address, Direction::received, datagram.bytes);
    return datagram;
}
