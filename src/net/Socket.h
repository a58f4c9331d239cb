// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>

#include <netinet/in.h>

// Owns one IPv4 socket descriptor, or none, and remembers the address that goes with it: the local one of a server,
// the remote one of an accepted peer. Descriptors are close-on-exec, so that what a shell command leaves running
// does not keep our ports.
class Socket
{
public:
    Socket() = default;
    virtual ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    // -1 when there is none.
    [[nodiscard]] int descriptor() const { return fd; }
    [[nodiscard]] const sockaddr_in& boundAddress() const { return address; }

    // Takes over a descriptor and its address. REQUIRES: there is no descriptor yet.
    void adopt(int descriptor, const sockaddr_in& itsAddress);

    // Does nothing without a descriptor. Logs the outcome; after a failure the descriptor stays, so that a later
    // call tries again.
    void close();

    // Thin calls: the result is the system's, 0 or -1 with errno set, and nothing is logged.
    int setReuseAddress(int value);
    int setDontRoute(int value);
    int bind();
    int bindToDevice(const char* name);

    // Stores the address in network order. An address that inet_aton() refuses is logged and leaves `out` alone.
    static int parseAddress(const char* text, std::uint32_t& out);

protected:
    int setOption(int level, int option, int value);

    // The set-up that all servers share: reuse of the address, bind to `localAddress` (host order, 0 for any) and
    // `port` (host order), and to `device` unless its name is empty. Logs each step; throws SetupError.
    void bindTo(std::uint16_t port, std::uint32_t localAddress, const char* device);

    int fd = -1;
    sockaddr_in address = {};
};
