// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "net/UdpSocket.h"

#include <cstdint>

// A datagram socket bound to a port on all local addresses. Address reuse lets several share the port, each on its
// own network device.
class UdpServer : public UdpSocket
{
public:
    // `port` in host order; an empty device name binds to no device. Logs each step and throws SetupError.
    UdpServer(std::uint16_t port, const char* device) { bindTo(port, INADDR_ANY, device); }
};
