// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Network.h"

#include "client/model/Remedy.h"
#include "client/wire/CausesOfSilence.h"
#include "client/wire/HostInterfaces.h"

#include <cerrno>
#include <cstring>
#include <fmt/core.h>

namespace
{

Failure nobodyAnswered(const std::string& name)
{
    return {ExitCode::noAnswer,
            Category::timeout,
            {},
            fmt::format("nobody answered as \"{}\": {}", name, causesOfSilence())};
}

std::string leavesOut()
{
    return fmt::format("; {} leaves an interface out", wordOf(Remedy::chooseInterface));
}

Failure notSent(std::string hint)
{
    return {ExitCode::unreachable, Category::noNetwork, "sending a broadcast", std::move(hint)};
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

// Whatever interface can be used; one that has gone is no failure, since nobody asked for it. One that this machine
// gives no socket for is: whoever is there would not be heard.
std::vector<BroadcastSocket> Network::openAll() const
{
    Failure failure{ExitCode::unreachable, Category::noInterface, "opening a socket",
                    "no interface of this host is up and able to broadcast"};
    std::vector<BroadcastSocket> sockets;
    for (const std::string& name : HostInterfaces().thatBroadcast()) {
        try {
            sockets.emplace_back(wire, name);
        } catch (const Failure& why) {
            if (why.category != Category::noInterface) {
                throw;
            }
            failure = why;
        }
    }
    if (sockets.empty()) {
        throw Failure(failure);
    }
    return sockets;
}

std::vector<BroadcastSocket> Network::openInterfaces(const std::string& onlyInterface) const
{
    std::vector<BroadcastSocket> sockets;
    if (!onlyInterface.empty()) {
        sockets.emplace_back(wire, onlyInterface);
    } else if (!options.interfaces.empty()) {
        for (const std::string& name : options.interfaces) {
            sockets.emplace_back(wire, name);
        }
    } else {
        sockets = openAll();
    }
    return sockets;
}

std::optional<Failure> Network::broadcast(const std::vector<BroadcastSocket>& sockets, const Request& request,
                                          Reach reach)
{
    std::vector<std::pair<std::string, int>> failed;
    for (const BroadcastSocket& socket : sockets) {
        if (!socket.broadcast(request)) {
            failed.emplace_back(socket.interface(), errno);
        }
    }
    if (failed.size() == sockets.size()) {
        throw notSent(fmt::format("no interface took the datagram: {}", ::strerror(failed.back().second)));
    }
    std::optional<Failure> unasked;
    for (const auto& [interface, error] : failed) {
        const std::string what =
            fmt::format("{} took no broadcast, so that nobody there was asked: {}", interface, ::strerror(error));
        unasked = notSent(what + leavesOut());
        if (reach == Reach::allInterfaces) {
            throw Failure(*unasked);
        }
        if (options.warn && deaf.insert(interface).second) {
            options.warn(what);
        }
    }
    return unasked;
}

std::optional<Failure> Network::leftOut() const
{
    const std::vector<std::string> down =
        isToldInterfaces() ? std::vector<std::string>() : HostInterfaces().thatAreDown();
    if (down.empty()) {
        return std::nullopt;
    }
    return notSent(fmt::format("{} is down, so that nobody there was asked{}", down.front(), leavesOut()));
}

bool Listening::takesOneMore(std::size_t sockets)
{
    return Clock::now() < end || ++late <= sockets * mostDatagramsWaiting;
}

Task<std::optional<Datagram>> Network::receive(const std::vector<BroadcastSocket>& sockets, Listening& listening)
{
    std::vector<int> descriptors;
    descriptors.reserve(sockets.size());
    for (const BroadcastSocket& socket : sockets) {
        descriptors.push_back(socket.descriptor());
    }
    while (listening.takesOneMore(sockets.size())) {
        const bool ready = co_await wire.loop.anyReadable(descriptors, listening.end);
        if (!ready) {
            break;
        }
        for (std::size_t left = sockets.size(); left > 0; --left) {
            std::optional<Datagram> datagram = sockets[listening.nextTurn() % sockets.size()].receive();
            if (datagram) {
                co_return datagram;
            }
        }
    }
    co_return std::nullopt;
}

Task<std::optional<CardReply>> Network::awaitReply(const std::vector<BroadcastSocket>& sockets, const Request& request,
                                                   const ByName& how, TimePoint deadline)
{
    Listening listening(deadline);
    for (;;) {
        const std::optional<Datagram> datagram = co_await receive(sockets, listening);
        if (!datagram) {
            co_return std::nullopt;
        }
        std::optional<Reply> reply = replyIn(*datagram, request);
        if (!reply) {
            continue;
        }
        if (!how.anyStatus) {
            checkStatus(reply->header);
        }
        CardReply answer{std::move(*reply), datagram->address, datagram->interface};
        // Without a text nobody says who it is. But a card drops what is for another, so whoever answers was meant.
        if (!how.isMine || answer.reply.payload.empty() || how.isMine(answer)) {
            co_return std::move(answer);
        }
    }
}

Task<CardReply> Network::askByName(std::string name, Request request, ByName how)
{
    wire.gate.admit(request); // before a socket is opened, which may fail
    const std::vector<BroadcastSocket> sockets = openInterfaces(how.onlyInterface);
    const RetryPolicy policy = how.policy.value_or(options.policy);
    const int attempts = changesNothing(request) ? policy.retries + 1 : 1;
    const TimePoint start = Clock::now();
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        broadcast(sockets, request); // the same each time, so that a late answer to an earlier one counts, too
        const auto share = policy.timeout * attempt / attempts;
        const TimePoint end = start + std::chrono::duration_cast<Clock::duration>(share);
        std::optional<CardReply> reply = co_await awaitReply(sockets, request, how, end);
        if (reply) {
            co_return std::move(*reply);
        }
    }
    throw Failure(nobodyAnswered(name));
}

Task<Reply> Network::askAnybody(Request request)
{
    wire.gate.admit(request); // before a socket is opened, which may fail
    const std::vector<BroadcastSocket> sockets = openInterfaces();
    broadcast(sockets, request);
    ByName how;
    how.anyStatus = true;
    std::optional<CardReply> answer = co_await awaitReply(sockets, request, how, deadline());
    if (!answer) {
        throw Failure{ExitCode::noAnswer, Category::timeout, {}, "no card answered in time"};
    }
    co_return std::move(answer->reply);
}
