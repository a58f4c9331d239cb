// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "net/Socket.h"

#include <cstddef>

// A datagram socket that receives from and sends to explicit addresses.
class UdpSocket : public Socket
{
public:
    // Throws SetupError after logging.
    UdpSocket();

    // Returns the system's result and logs nothing.
    int setBroadcast(int value);

    // Receives one datagram, cut to `length` bytes, and stores where it came from. Returns the number of bytes, or
    // -1 after logging.
    int receiveFrom(void* buffer, std::size_t length, sockaddr_in* sender, int flags);

    // Sends one datagram. Returns the number of bytes sent, or -1; both a failure and a short send are logged.
    int sendTo(const void* buffer, std::size_t length, const sockaddr_in* destination, int flags);
};
