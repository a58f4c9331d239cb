// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"
#include "client/engine/EventLoop.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Frame.h"

#include <span>
#include <string>

class Console;

// A connection to one card. The daemon serves one client at a time, so it is opened late and closed (destroyed) as
// soon as the answer is in.
class TcpConnection
{
public:
    // Throws an unreachable Failure if it is refused, not routed or not accepted before the deadline.
    static Task<TcpConnection> open(EventLoop& loop, const Console& console, Endpoint endpoint, TimePoint deadline);

    // Sends all bytes; false if the card closed its side meanwhile, in which case an answer may still be read.
    // Throws a noAnswer Failure at the deadline.
    Task<bool> sendAll(Bytes bytes, TimePoint deadline, std::string phase);

    // Sends what fits now; the number of bytes, 0 if nothing fits, -1 if the card closed its side.
    [[nodiscard]] long sendSome(std::span<const std::byte> bytes) const;
    // Bytes handed to the kernel that the card has not acknowledged yet.
    [[nodiscard]] std::size_t unacknowledged() const;

    // The complete answer, its header checked against the request, its status not.
    Task<Reply> receiveReply(const Request& request, TimePoint deadline, std::string phase);

    [[nodiscard]] int descriptor() const { return socket.get(); }

private:
    TcpConnection(EventLoop& newLoop, const Console& newConsole, Endpoint newEndpoint);
    Task<void> connect(TimePoint deadline);
    void checkConnected(const std::string& phase) const;
    Task<Bytes> receiveExactly(std::size_t size, TimePoint deadline, std::string phase);
    long receiveSome(std::span<std::byte> space, const std::string& phase) const;

    EventLoop* loop;
    const Console* console;
    Endpoint endpoint;
    Descriptor socket;
};
