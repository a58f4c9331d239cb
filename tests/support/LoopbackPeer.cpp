// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/LoopbackPeer.h"

#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <system_error>
#include <unistd.h>

namespace
{

template<typename Result>
Result checked(Result result, const char* what)
{
    if (result == -1) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void bindTo(int descriptor, std::uint16_t port)
{
    const sockaddr_in address = loopback(port);
    checked(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
}

bool nothingWaits(int descriptor)
{
    std::uint8_t byte = 0;
    return recv(descriptor, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == -1 && errno == EAGAIN;
}

} // namespace

std::uint16_t boundPort(int descriptor)
{
    sockaddr_in address{};
    socklen_t length = sizeof address;
    checked(getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length), "getsockname");
    return ntohs(address.sin_port);
}

std::uint16_t freePort()
{
    const PeerSocket probe(SOCK_STREAM);
    return probe.port();
}

PeerSocket::PeerSocket(int type) : descriptor(checked(socket(AF_INET, type | SOCK_CLOEXEC, 0), "socket"))
{
    constexpr timeval limit{5, 0};
    checked(setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit), "setsockopt");
    bindTo(descriptor, 0);
}

PeerSocket::~PeerSocket()
{
    close(descriptor);
}

TcpPeer::TcpPeer(std::uint16_t port) : PeerSocket(SOCK_STREAM)
{
    const sockaddr_in address = loopback(port);
    checked(connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), "connect");
}

void TcpPeer::send(const Bytes& bytes) const
{
    checked(::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL), "send");
}

void TcpPeer::sendUrgent() const
{
    ::send(descriptor, "!", 1, MSG_OOB);
}

void TcpPeer::finishSending() const
{
    checked(shutdown(descriptor, SHUT_WR), "shutdown");
}

void TcpPeer::reset()
{
    constexpr linger atOnce{1, 0};
    checked(setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce), "setsockopt");
    checked(close(descriptor), "close");
    descriptor = -1;
}

Bytes TcpPeer::receive(std::size_t count) const
{
    Bytes bytes(count);
    const ssize_t size = checked(recv(descriptor, bytes.data(), count, MSG_WAITALL), "recv");
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

Bytes TcpPeer::receiveAll() const
{
    Bytes all;
    for (Bytes piece = receive(1); !piece.empty(); piece = receive(1)) {
        all.push_back(piece.front());
    }
    return all;
}

bool TcpPeer::hasNothing() const
{
    return nothingWaits(descriptor);
}

UdpPeer::UdpPeer() : PeerSocket(SOCK_DGRAM) {}

void UdpPeer::send(std::uint16_t port, const Bytes& datagram) const
{
    const sockaddr_in address = loopback(port);
    checked(sendto(descriptor, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&address),
                   sizeof address),
            "sendto");
}

Bytes UdpPeer::receive() const
{
    Bytes datagram(65536);
    const ssize_t size = checked(recv(descriptor, datagram.data(), datagram.size(), 0), "recv");
    datagram.resize(static_cast<std::size_t>(size));
    return datagram;
}

bool UdpPeer::hasNothing() const
{
    return nothingWaits(descriptor);
}
