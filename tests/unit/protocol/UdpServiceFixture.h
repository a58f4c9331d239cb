// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/UdpService.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"
#include "unit/protocol/HostHeader.h"

#include <cstring>
#include <syslog.h>

class OpenUdpService final : public UdpService
{
public:
    using UdpService::datagram;
    using UdpService::sender;
};

inline constexpr ServiceConfig anyUdpPort = {
    .port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 0, .deviceName = "lo", .broadcast = 1};

// An open service and a requester; the log and the journal start behind the set-up.
class UdpServiceTest : public SystemTest
{
protected:
    UdpServiceTest()
    {
        service.open(anyUdpPort);
        log.clear();
        forgetCalls();
    }

    // Receives one request, without what is logged about it.
    void receive(const Bytes& bytes)
    {
        requester.send(boundPort(service.descriptor()), bytes);
        ASSERT_EQ(service.receiveDatagram(), 0);
        log.clear();
    }

    [[nodiscard]] std::string arrival(std::size_t size) const
    {
        return "Got datagram of " + std::to_string(size) + " bytes from 127.0.0.1 on port " +
               std::to_string(requester.port());
    }

    OpenUdpService service;
    UdpPeer requester;
};
