// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/TcpConnection.h"

#include "client/wire/HostInterfaces.h"

#include <cerrno>
#include <cstring>
#include <fmt/core.h>
#include <linux/sockios.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace
{

Failure unreachable(int error)
{
    constexpr const char* phase = "connecting";
    if (error == ECONNREFUSED) {
        return {ExitCode::unreachable, Category::refused, phase,
                "the host is up, but nothing listens: the daemon does not run, or this is no card"};
    }
    if (error == ETIMEDOUT) {
        return {
            ExitCode::unreachable, Category::connectTimeout, phase,
            "no connection in time: the card is busy with another client and more are waiting, or the host is down"};
    }
    return {ExitCode::unreachable, Category::noRoute, phase,
            fmt::format("the card cannot be reached: {}", ::strerror(error))};
}

Failure notInTime()
{
    return {ExitCode::noAnswer,
            Category::timeout,
            {},
            "connected, but no answer in time: the card is busy with another client or with a long command"};
}

Failure closedEarly()
{
    return {ExitCode::noAnswer, Category::closed, {}, "the card closed the connection without an answer"};
}

// What connect() says at once, this machine says.
Failure noWay(int error)
{
    return {ExitCode::unreachable, Category::noNetwork, "connecting",
            fmt::format("this machine has no way to the card: {}", ::strerror(error))};
}

Descriptor openSocket(const std::string& interface)
{
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) {
        throw Failure{ExitCode::internal, Category::noSocket, "connecting",
                      fmt::format("no socket can be opened: {}", ::strerror(errno))};
    }
    const int error = interface.empty() ? 0 : bindToInterface(socket.get(), interface);
    if (error != 0) {
        throw Failure{ExitCode::unreachable, error == ENODEV ? Category::noInterface : Category::noSocket, "connecting",
                      fmt::format("cannot connect over {}: {}", interface, ::strerror(error))};
    }
    return socket;
}

// What connect() ended with; 0 once connected.
Task<int> connectError(const Wire& wire, int socket, Endpoint endpoint, TimePoint deadline)
{
    const sockaddr_in address = socketAddress(endpoint);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        co_return 0;
    }
    if (errno == ECONNREFUSED) { // a peer on this machine refuses at once
        co_return errno;
    }
    if (errno != EINPROGRESS) {
        throw noWay(errno);
    }
    const bool ready = co_await wire.loop.writable(socket, deadline);
    if (!ready) {
        co_return ETIMEDOUT;
    }
    int error = 0; // writable it is also when it has failed
    socklen_t size = sizeof error;
    ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
    co_return error;
}

} // namespace

TcpConnection::TcpConnection(const Wire& newWire, Endpoint newEndpoint, Request newRequest, Descriptor newSocket)
    : wire(&newWire), endpoint(std::move(newEndpoint)), request(std::move(newRequest)), socket(std::move(newSocket))
{
}

Task<TcpConnection> TcpConnection::open(const Wire& wire, Endpoint endpoint, Request request, TimePoint deadline)
{
    wire.gate.admit(request);
    Descriptor socket = openSocket(endpoint.interface);
    const int error = co_await connectError(wire, socket.get(), endpoint, deadline);
    if (error != 0) {
        throw unreachable(error);
    }
    co_return TcpConnection(wire, std::move(endpoint), std::move(request), std::move(socket));
}

long TcpConnection::transmit(std::span<const std::byte> bytes) const
{
    // MSG_NOSIGNAL: a program that uses this need not have thought of SIGPIPE.
    const ssize_t sent = ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent == -1) {
        return errno == EAGAIN || errno == EINTR ? 0 : -1;
    }
    wire->show(endpoint.address, Direction::sent, bytes.first(static_cast<std::size_t>(sent)));
    return sent;
}

std::size_t TcpConnection::unacknowledged() const
{
    // Where the kernel does not tell, all counts as taken: the answer then shows it.
    int bytes = 0;
    return ::ioctl(socket.get(), SIOCOUTQ, &bytes) == 0 && bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
}

Task<bool> TcpConnection::sendRequest(TimePoint deadline)
{
    const Bytes bytes = encode(request);
    std::span<const std::byte> rest = bytes;
    while (!rest.empty()) {
        const long sent = transmit(rest);
        if (sent == -1) { // no failure yet: a card that refuses early has answered before it closed its side
            co_return false;
        }
        rest = rest.subspan(static_cast<std::size_t>(sent));
        if (sent == 0) {
            const bool ready = co_await wire->loop.writable(socket.get(), deadline);
            if (!ready) {
                throw notInTime();
            }
        }
    }
    leftToStream = request.streamed; // only now: what is streamed must come behind the request
    co_return true;
}

long TcpConnection::sendSome(std::span<const std::byte> bytes)
{
    if (bytes.size() > leftToStream) {
        throw std::logic_error("more bytes than the request announced"); // they would be taken for another request
    }
    const long sent = transmit(bytes);
    leftToStream -= sent > 0 ? static_cast<std::uint64_t>(sent) : 0;
    return sent;
}

// 0 when nothing is there yet.
long TcpConnection::receiveSome(std::span<std::byte> space) const
{
    const ssize_t received = ::recv(socket.get(), space.data(), space.size(), 0);
    if (received == -1 && (errno == EAGAIN || errno == EINTR)) {
        return 0;
    }
    if (received < 1) {
        throw closedEarly();
    }
    return received;
}

Task<Bytes> TcpConnection::receiveExactly(std::size_t size, TimePoint deadline)
{
    Bytes bytes(size);
    std::span<std::byte> space = bytes;
    while (!space.empty()) {
        const bool ready = co_await wire->loop.readable(socket.get(), deadline);
        if (!ready) {
            throw notInTime();
        }
        space = space.subspan(static_cast<std::size_t>(receiveSome(space)));
    }
    co_return bytes;
}

Task<Reply> TcpConnection::receiveReply(TimePoint deadline)
{
    Bytes head = co_await receiveExactly(headerSize, deadline);
    Reply reply;
    reply.header = decodeHeader(std::span(head).first<headerSize>());
    try {
        // What makes no sense is what people who look at frames are after.
        checkReplyHeader(reply.header, request);
    } catch (const Failure&) {
        wire->show(endpoint.address, Direction::received, head);
        throw;
    }
    reply.payload = co_await receiveExactly(reply.header.payloadLength, deadline);
    head.insert(head.end(), reply.payload.begin(), reply.payload.end());
    wire->show(endpoint.address, Direction::received, head);
    co_return reply;
}

Task<PortState> probePort(const Wire& wire, Endpoint endpoint, TimePoint deadline)
{
    if (!wire.gate.admitsProbes()) {
        co_return PortState::silent;
    }
    const Descriptor socket = openSocket(endpoint.interface);
    const int error = co_await connectError(wire, socket.get(), std::move(endpoint), deadline);
    if (error == 0) {
        co_return PortState::open;
    }
    // What a router or the kernel says of the way, such as EHOSTUNREACH, is not the card's word.
    co_return error == ECONNREFUSED ? PortState::closed : PortState::silent;
}
