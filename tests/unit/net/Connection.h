// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "net/TcpServer.h"
#include "net/TcpSocket.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"

#include <csignal>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// A test with one connection between the daemon's `peer` and a `client`. What happened up to there is forgotten.
class ConnectionTest : public SystemTest
{
protected:
    ConnectionTest() : client(boundPort(server.descriptor()))
    {
        std::signal(SIGPIPE, SIG_IGN); // as the daemon does at start-up
        peer.close();
        server.accept(peer);
        log.clear();
        forgetCalls();
    }

    TcpServer server{0};
    std::optional<TcpPeer> client;
    TcpSocket peer;
};
