// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "services/TarvelServiceUdp.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"

#include <cstring>
#include <memory>

#include <syslog.h>

// The datagram service of a card named "card7" and a requester; the log and the journal start behind the set-up.
class TarvelUdpTest : public SystemTest
{
protected:
    TarvelUdpTest()
    {
        uci.set("system.@system[0].hostname", "card7");
        service = std::make_unique<TarvelServiceUdp>();
        service->open(
            {.port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 0, .deviceName = nullptr, .broadcast = 1});
        log.clear();
        forgetCalls();
    }

    // Lets the service handle one datagram, and keeps what the process wrote meanwhile.

    int serve(const Bytes& datagram)
    {
        requester.send(boundPort(service->descriptor()), datagram);
        CapturedOutput output;
        const int result = service->processDatagram();
        out = output.out();
        err = output.err();
        return result;
    }

    // The log without the line that each datagram begins with.
    [[nodiscard]] std::vector<CapturedLog::Line> logged() const { return {log.lines().begin() + 1, log.lines().end()}; }

    void expectBroadcast(const SampleHeader& request, std::uint8_t status)
    {
        EXPECT_EQ(hex(requester.receive()), hex(replyTo(request, status).bytes()));
        EXPECT_EQ(callsTo("sendto"),
                  (std::vector<std::string>{"20 255.255.255.255:" + std::to_string(requester.port())}));
    }

    void expectNoReply()
    {
        EXPECT_TRUE(callsTo("sendto").empty());
        EXPECT_TRUE(requester.hasNothing());
    }

    std::unique_ptr<TarvelServiceUdp> service;
    UdpPeer requester;
    std::string out;
    std::string err;
};
