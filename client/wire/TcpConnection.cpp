// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/TcpConnection.h"

#include "client/wire/Trace.h"

#include <cerrno>
#include <cstring>
#include <fmt/core.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace
{

Failure unreachable(int error)
{
    const std::string phase = "connecting";
    if (error == ECONNREFUSED) {
        return {ExitCode::unreachable, "refused", phase,
                "the host is up, but nothing listens: the daemon does not run, or this is no card"};
    }
    if (error == ETIMEDOUT) {
        return {
            ExitCode::unreachable, "connect-timeout", phase,
            "no connection in time: the card is busy with another client and more are waiting, or the host is down"};
    }
    return {ExitCode::unreachable, "no-route", phase, fmt::format("the card cannot be reached: {}", ::strerror(error))};
}

Failure notInTime(const std::string& phase)
{
    return {ExitCode::noAnswer, "timeout", phase,
            "connected, but no answer in time: the card is busy with another client or with a long command"};
}

Failure closedEarly(const std::string& phase)
{
    return {ExitCode::noAnswer, "closed", phase, "the card closed the connection without an answer"};
}

} // namespace

TcpConnection::TcpConnection(EventLoop& newLoop, const Console& newConsole, Endpoint newEndpoint)
    : loop(&newLoop),
      console(&newConsole),
      endpoint(std::move(newEndpoint)),
      socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
{
    if (!socket) {
        throw Failure{ExitCode::internal, "no-socket", "connecting",
                      fmt::format("no socket can be opened: {}", ::strerror(errno))};
    }
}

Task<TcpConnection> TcpConnection::open(EventLoop& loop, const Console& console, Endpoint endpoint, TimePoint deadline)
{
    TcpConnection connection(loop, console, std::move(endpoint));
    co_await connection.connect(deadline);
    co_return connection;
}

Task<void> TcpConnection::connect(TimePoint deadline)
{
    const sockaddr_in address = socketAddress(endpoint);
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        co_return;
    }
    if (errno != EINPROGRESS) {
        throw unreachable(errno);
    }
    const bool ready = co_await loop->writable(socket.get(), deadline);
    if (!ready) {
        throw unreachable(ETIMEDOUT);
    }
    int error = 0;
    socklen_t size = sizeof error;
    ::getsockopt(socket.get(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) {
        throw unreachable(error);
    }
}

long TcpConnection::sendSome(std::span<const std::byte> bytes) const
{
    const ssize_t sent = ::send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent == -1) {
        return errno == EAGAIN || errno == EINTR ? 0 : -1;
    }
    traceSent(*console, endpoint.address, bytes.first(static_cast<std::size_t>(sent)));
    return sent;
}

std::size_t TcpConnection::unacknowledged() const
{
    int bytes = 0;
    return ::ioctl(socket.get(), SIOCOUTQ, &bytes) == 0 && bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
}

Task<bool> TcpConnection::sendAll(Bytes bytes, TimePoint deadline, std::string phase)
{
    std::span<const std::byte> rest = bytes;
    while (!rest.empty()) {
        const long sent = sendSome(rest);
        if (sent == -1) {
            co_return false;
        }
        rest = rest.subspan(static_cast<std::size_t>(sent));
        if (sent == 0) {
            const bool ready = co_await loop->writable(socket.get(), deadline);
            if (!ready) {
                throw notInTime(phase);
            }
        }
    }
    co_return true;
}

// 0 when nothing is there yet.
long TcpConnection::receiveSome(std::span<std::byte> space, const std::string& phase) const
{
    const ssize_t received = ::recv(socket.get(), space.data(), space.size(), 0);
    if (received == -1 && (errno == EAGAIN || errno == EINTR)) {
        return 0;
    }
    if (received < 1) {
        throw closedEarly(phase);
    }
    return received;
}

Task<Bytes> TcpConnection::receiveExactly(std::size_t size, TimePoint deadline, std::string phase)
{
    Bytes bytes(size);
    std::span<std::byte> space = bytes;
    while (!space.empty()) {
        const bool ready = co_await loop->readable(socket.get(), deadline);
        if (!ready) {
            throw notInTime(phase);
        }
        space = space.subspan(static_cast<std::size_t>(receiveSome(space, phase)));
    }
    co_return bytes;
}

Task<Reply> TcpConnection::receiveReply(const Request& request, TimePoint deadline, std::string phase)
{
    Bytes head = co_await receiveExactly(headerSize, deadline, phase);
    Reply reply;
    reply.header = decodeHeader(std::span(head).first<headerSize>());
    try {
        checkReplyHeader(reply.header, request, phase);
    } catch (const Failure&) {
        traceReceived(*console, endpoint.address, head);
        throw;
    }
    reply.payload = co_await receiveExactly(reply.header.payloadLength, deadline, phase);
    head.insert(head.end(), reply.payload.begin(), reply.payload.end());
    traceReceived(*console, endpoint.address, head);
    co_return reply;
}
