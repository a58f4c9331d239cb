// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Network.h"

#include "client/output/Console.h"
#include "client/wire/Trace.h"

#include <cerrno>
#include <cstring>
#include <fmt/core.h>

namespace
{

Failure silence(const std::string& name, const std::string& phase)
{
    return {
        ExitCode::noAnswer, "timeout", phase,
        fmt::format("nobody answered as \"{}\": no card has this name (case counts), it or its daemon is down, it is "
                    "busy (with an archive, an upgrade or its time service a card hears nothing), it is behind a "
                    "router (broadcasts stay on the local network), or a firewall here drops the reply, which is a "
                    "broadcast from the card's port {}",
                    name, cardPort)};
}

// Whatever interface can be used; one that cannot is no failure, since nobody asked for it.
std::vector<BroadcastSocket> openAll()
{
    Failure failure{ExitCode::unreachable, "no-interface", "opening a socket",
                    "no interface of this host is up and able to broadcast"};
    std::vector<BroadcastSocket> sockets;
    for (const std::string& name : broadcastInterfaces()) {
        try {
            sockets.emplace_back(name);
        } catch (const Failure& why) {
            failure = why;
        }
    }
    if (sockets.empty()) {
        throw Failure(failure);
    }
    return sockets;
}

} // namespace

std::optional<Reply> replyIn(const Datagram& datagram, const Request& request)
{
    if (datagram.port != cardPort || datagram.bytes.size() < headerSize) {
        return std::nullopt;
    }
    Reply reply;
    reply.header = decodeHeader(std::span(datagram.bytes).first<headerSize>());
    if (!answers(reply.header, request) || reply.header.startPattern != headerStartPattern) {
        return std::nullopt;
    }
    reply.payload.assign(datagram.bytes.begin() + headerSize, datagram.bytes.end());
    if (reply.payload.size() != reply.header.payloadLength) {
        return std::nullopt;
    }
    return reply;
}

Network::Network(EventLoop& newLoop, const Console& newConsole, Patience newPatience,
                 std::vector<std::string> newInterfaces)
    : loop(newLoop), console(newConsole), limits(newPatience), interfaces(std::move(newInterfaces))
{
}

void Network::holdBack(const Request& request) const
{
    if (dryRun == DryRun::everything || (dryRun == DryRun::changes && request.changesCard)) {
        throw NotSent{request};
    }
}

Task<TcpConnection> Network::connect(Endpoint endpoint)
{
    return TcpConnection::open(loop, console, std::move(endpoint), deadline());
}

Task<Reply> Network::askOnce(Endpoint endpoint, Request request, std::string phase)
{
    holdBack(request);
    TcpConnection connection = co_await connect(std::move(endpoint));
    const TimePoint end = deadline();
    co_await connection.sendAll(encode(request), end, phase);
    Reply reply = co_await connection.receiveReply(request, end, phase);
    co_return reply;
}

Task<Reply> Network::ask(Endpoint endpoint, Request request, std::string phase)
{
    for (int left = request.changesCard ? 0 : limits.retries;; --left) {
        try {
            Reply reply = co_await askOnce(endpoint, request, phase);
            checkStatus(reply.header, phase);
            co_return reply;
        } catch (const Failure& failure) {
            if (failure.category != "closed" || left <= 0) {
                throw;
            }
        }
    }
}

std::vector<BroadcastSocket> Network::openInterfaces(const std::string& onlyInterface) const
{
    std::vector<BroadcastSocket> sockets;
    if (!onlyInterface.empty()) {
        sockets.emplace_back(onlyInterface);
    } else if (!interfaces.empty()) {
        for (const std::string& name : interfaces) {
            sockets.emplace_back(name);
        }
    } else {
        sockets = openAll();
    }
    return sockets;
}

void Network::broadcast(const std::vector<BroadcastSocket>& sockets, const Request& request) const
{
    const Bytes bytes = encode(request);
    int error = 0;
    bool sent = false;
    for (const BroadcastSocket& socket : sockets) {
        if (socket.broadcast(bytes)) {
            sent = true;
            traceSent(console, socket.interface(), bytes);
        } else {
            error = errno;
        }
    }
    if (!sent) {
        throw Failure{ExitCode::unreachable, "no-route", "sending a broadcast",
                      fmt::format("no interface took the datagram: {}", ::strerror(error))};
    }
}

Task<std::optional<Datagram>> Network::receive(const std::vector<BroadcastSocket>& sockets, TimePoint deadline)
{
    std::vector<int> descriptors;
    descriptors.reserve(sockets.size());
    for (const BroadcastSocket& socket : sockets) {
        descriptors.push_back(socket.descriptor());
    }
    for (;;) {
        for (const BroadcastSocket& socket : sockets) {
            std::optional<Datagram> datagram = socket.receive();
            if (datagram) {
                traceReceived(console, datagram->address, datagram->bytes);
                co_return datagram;
            }
        }
        const bool ready = co_await loop.anyReadable(descriptors, deadline);
        if (!ready || Clock::now() >= deadline) { // the second ends a flood
            co_return std::nullopt;
        }
    }
}

Task<std::optional<CardReply>> Network::awaitReply(const std::vector<BroadcastSocket>& sockets, const Request& request,
                                                   const std::string& phase, const ByName& how, TimePoint deadline)
{
    for (;;) {
        const std::optional<Datagram> datagram = co_await receive(sockets, deadline);
        if (!datagram) {
            co_return std::nullopt;
        }
        std::optional<Reply> reply = replyIn(*datagram, request);
        if (!reply) {
            continue;
        }
        if (!how.anyStatus) {
            checkStatus(reply->header, phase);
        }
        CardReply answer{std::move(*reply), datagram->address, datagram->interface};
        if (!how.isMine || answer.reply.payload.empty() || how.isMine(answer)) {
            co_return std::move(answer);
        }
    }
}

Task<CardReply> Network::askByName(std::string name, Request request, std::string phase, ByName how)
{
    holdBack(request);
    const std::vector<BroadcastSocket> sockets = openInterfaces(how.onlyInterface);
    const Patience patience = how.patience.value_or(limits);
    const int attempts = request.changesCard ? 1 : patience.retries + 1;
    const TimePoint start = Clock::now();
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        broadcast(sockets, request);
        const auto share = patience.timeout * attempt / attempts;
        const TimePoint end = start + std::chrono::duration_cast<Clock::duration>(share);
        std::optional<CardReply> reply = co_await awaitReply(sockets, request, phase, how, end);
        if (reply) {
            co_return std::move(*reply);
        }
    }
    throw silence(name, phase);
}
