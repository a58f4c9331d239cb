// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "net/Socket.h"

#include <cstddef>
#include <span>

// A stream socket that receives and sends whole buffers. All calls block; on purpose there is no time-out on what a
// peer sends, since one request is served at a time. Only the hardened build ends a connection that stalls.
class TcpSocket : public Socket
{
public:
    // Creates an unconnected stream socket; throws SetupError after logging.
    TcpSocket();

    // Reads exactly `length` bytes. Returns `length`; 0 if `length` is below 1 or the peer closed the connection;
    // -1 on error. Everything but the first two is logged.
    int receive(void* buffer, int length, int flags);
    int receive(std::span<std::byte> buffer) { return receive(buffer.data(), static_cast<int>(buffer.size()), 0); }

    // Writes all `length` bytes. Returns `length`; 0 if `length` is below 1 or the peer has gone; -1 on error.
    // REQUIRES: SIGPIPE is ignored.
    int send(const void* buffer, int length, int flags);

    // Lets the kernel probe a silent peer and give up one that takes nothing of a reply, so that one that vanished
    // without a word holds the connection for a minute and a half. Silent, and as good as the system allows.
    void enableKeepAlive();
};
