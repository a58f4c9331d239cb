// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"
#include "client/engine/Task.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Frame.h"
#include "client/wire/Wire.h"

#include <cstdint>
#include <span>
#include <string>

// A connection to one card, for one request. The daemon serves one client at a time, so it is opened late and closed
// (destroyed) as soon as the answer is in.
class TcpConnection
{
public:
    // Throws NotSent for a request that must not leave, and an unreachable Failure if the connection is refused, not
    // routed or not accepted before the deadline. The wire outlives the connection.
    static Task<TcpConnection> open(const Wire& wire, Endpoint endpoint, Request request, TimePoint deadline);

    // Sends the request; false if the card closed its side meanwhile, in which case an answer may still be read.
    // Throws a noAnswer Failure at the deadline.
    Task<bool> sendRequest(TimePoint deadline);

    // Sends what fits now of the bytes that the request announces behind itself (Request::streamed); the number of
    // bytes, 0 if nothing fits, -1 if the card closed its side.
    [[nodiscard]] long sendSome(std::span<const std::byte> bytes);
    // Bytes handed to the kernel that the card has not acknowledged yet.
    [[nodiscard]] std::size_t unacknowledged() const;

    // The complete answer, its header checked against the request, its status not.
    Task<Reply> receiveReply(TimePoint deadline);

    [[nodiscard]] int descriptor() const { return socket.get(); }

private:
    TcpConnection(const Wire& newWire, Endpoint newEndpoint, Request newRequest, Descriptor newSocket);
    [[nodiscard]] long transmit(std::span<const std::byte> bytes) const;
    Task<Bytes> receiveExactly(std::size_t size, TimePoint deadline);
    long receiveSome(std::span<std::byte> space) const;

    const Wire* wire;
    Endpoint endpoint;
    Request request;
    std::uint64_t leftToStream = 0; // nothing before the request itself is out
    Descriptor socket;
};

// How a card's port takes a connection.
enum class PortState { open, closed, silent };

// Connects and closes without a word. In a dry run nobody is contacted, and every port is silent. Throws a Failure if
// this machine can contact nobody.
Task<PortState> probePort(const Wire& wire, Endpoint endpoint, TimePoint deadline);
