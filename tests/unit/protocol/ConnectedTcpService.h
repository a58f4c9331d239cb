// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "support/LoopbackPeer.h"

// A TCP service that listens on a port of the kernel's choice, and a client whose connection it has accepted. Both
// sides run on one thread: the client speaks first, then the service handles what has come.
template<typename Service>
class ConnectedTcpService
{
public:
    // `closeFirstSocket` gets rid of the unconnected socket that a service starts with.
    template<typename CloseFirstSocket>
    explicit ConnectedTcpService(CloseFirstSocket closeFirstSocket)
    {
        service.open(
            {.port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 0, .deviceName = nullptr, .broadcast = 0});
        closeFirstSocket(service);
        client = std::make_unique<TcpPeer>(boundPort(service.serverDescriptor()));
        service.acceptPeer();
    }

    Service service;
    std::unique_ptr<TcpPeer> client;
};
