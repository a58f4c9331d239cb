// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/SampleMessages.h"

#include <cstdint>

// The other end of the daemon's sockets, on 127.0.0.1. What a peer waits for must come within five seconds, or it
// throws: a test that would hang fails instead.

// The port that a socket of the daemon is bound to, and a port that nobody is bound to.
std::uint16_t boundPort(int descriptor);
std::uint16_t freePort();

class PeerSocket
{
public:
    explicit PeerSocket(int type);
    ~PeerSocket();
    PeerSocket(const PeerSocket&) = delete;
    PeerSocket& operator=(const PeerSocket&) = delete;

    [[nodiscard]] std::uint16_t port() const { return boundPort(descriptor); }

protected:
    int descriptor;
};

class TcpPeer : public PeerSocket
{
public:
    explicit TcpPeer(std::uint16_t port); // connects

    void send(const Bytes& bytes) const;
    void sendUrgent() const;    // one byte, out of band
    void finishSending() const; // the daemon reads the end of the stream, and can still answer
    void reset();               // goes away in the rudest way: the daemon's next call fails
    [[nodiscard]] Bytes receive(std::size_t count) const; // exactly that many bytes
    [[nodiscard]] Bytes receiveAll() const;               // until the daemon closes the connection
    [[nodiscard]] bool hasNothing() const;                // neither bytes nor an end have arrived
};

class UdpPeer : public PeerSocket
{
public:
    UdpPeer(); // on a port of its own

    void send(std::uint16_t port, const Bytes& datagram) const;
    [[nodiscard]] Bytes receive() const; // one datagram
    [[nodiscard]] bool hasNothing() const;
};
