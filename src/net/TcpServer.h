// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "net/TcpSocket.h"

#include <cstdint>

// A listening stream socket with room for one peer at a time. Construction logs each step and throws SetupError.
class TcpServer : public TcpSocket
{
public:
    // Listens on all local addresses; `port` in host order.
    explicit TcpServer(std::uint16_t port);

    // Listens on `localAddress` (host order), on the network device `device` unless the name is empty.
    TcpServer(std::uint16_t port, std::uint32_t localAddress, const char* device);

    // The same with the address as text.
    TcpServer(std::uint16_t port, const char* addressText, const char* device);

    // Accepts one connection into `peer`, which must have no descriptor. Returns 0, or -1 after logging.
    int accept(TcpSocket& peer);
};
