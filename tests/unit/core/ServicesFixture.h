// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "services/TarvelServiceTcp.h"
#include "services/TarvelServiceUdp.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"

#include <cstring>
#include <memory>

#include <syslog.h>

// The three services as they are right after start-up, on ports of the kernel's choice; the log and the journal start
// behind the set-up.
class ServicesTest : public SystemTest
{
protected:
    ServicesTest()
    {
        uci.set("system.@system[0].hostname", "card7");
        udpFirst = std::make_unique<TarvelServiceUdp>();
        udpSecond = std::make_unique<TarvelServiceUdp>();
        const ServiceConfig config = {
            .port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 0, .deviceName = nullptr, .broadcast = 1};
        tcp.open(config);
        udpFirst->open(config);
        udpSecond->open(config);
        log.clear();
        forgetCalls();
    }

    // Gets rid of the unconnected first socket and connects a client.
    std::unique_ptr<TcpPeer> connect()
    {
        tcp.dispatch();
        auto client = std::make_unique<TcpPeer>(boundPort(tcp.serverDescriptor()));
        tcp.acceptPeer();
        log.clear();
        forgetCalls();
        return client;
    }

    void sendToFirst(const Bytes& datagram) const { requester.send(boundPort(udpFirst->descriptor()), datagram); }
    void sendToSecond(const Bytes& datagram) const { requester.send(boundPort(udpSecond->descriptor()), datagram); }

    TarvelServiceTcp tcp;
    std::unique_ptr<TarvelServiceUdp> udpFirst;
    std::unique_ptr<TarvelServiceUdp> udpSecond;
    UdpPeer requester;
};
