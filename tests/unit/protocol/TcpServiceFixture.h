// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/TcpService.h"
#include "support/SystemTest.h"
#include "unit/protocol/ConnectedTcpService.h"
#include "unit/protocol/HostHeader.h"

#include <cstring>
#include <syslog.h>

class OpenTcpService final : public TcpService
{
public:
    using TcpService::peer;
};

// A service with a connected client; the log and the journal start behind the set-up.
class TcpServiceTest : public SystemTest
{
protected:
    TcpServiceTest()
    {
        log.clear();
        forgetCalls();
    }

    ConnectedTcpService<OpenTcpService> connection{[](OpenTcpService& opened) { opened.peer->close(); }};
    OpenTcpService& service = connection.service;
    TcpPeer& client = *connection.client;
};
