// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "services/TarvelServiceTcp.h"
#include "support/SystemTest.h"
#include "unit/protocol/ConnectedTcpService.h"
#include "util/Hardened.h"

#include <cstring>
#include <syslog.h>

// What the hardened build asks the card's tools, and what these say of an archive without members and of no keys.
constexpr const char* toTellNames = "{ tar -tzf firmware.tar.gz 2>/dev/null && echo; } | head -c 1048577";
constexpr const char* toTellDetails = "{ tar -tvzf firmware.tar.gz 2>/dev/null && echo; } | head -c 1048577";
constexpr const char* toListKeys = "{ test ! -e /etc/tarveld/keys || ls /etc/tarveld/keys; } 2>/dev/null && echo /";

// What the shell is given to unpack an upload: the hardened build makes the directory anew before, and looks at the
// archive.
inline Texts commandsOfUnpacking()
{
    if (hardened) {
        return {"rm -rf /tmp/upgrade && mkdir -m 700 /tmp/upgrade", toTellNames, toTellDetails,
                "tar -xzvf firmware.tar.gz -C /tmp/upgrade"};
    }
    return {"tar -xzvf firmware.tar.gz -C /tmp/upgrade"};
}

// The TCP service of a card with a connected client; the log and the journal start behind the set-up.
class TarvelTcpTest : public SystemTest
{
protected:
    TarvelTcpTest()
    {
        sandbox.makeDirectory("/tmp/upgrade");
        shell.answer(toTellNames, 0, "\n");
        shell.answer(toTellDetails, 0, "\n");
        shell.answer(toListKeys, 0, "/\n");
        log.clear();
        forgetCalls();
    }

    // Lets the service handle one message, and keeps what the process wrote meanwhile.
    void dispatch()
    {
        CapturedOutput output;
        service.dispatch();
        out = output.out();
        err = output.err();
    }

    void serve(const Bytes& message)
    {
        client.send(message);
        dispatch();
    }

    void expectStatus(const SampleHeader& request, std::uint8_t status)
    {
        EXPECT_EQ(hex(client.receive(20)), hex(replyTo(request, status).bytes()));
        EXPECT_TRUE(client.hasNothing());
    }

    // A reply with a text, whole.
    Bytes receiveTextReply()
    {
        const Bytes header = client.receive(20);
        return header + client.receive(SampleHeader::from(header).payloadLength);
    }

    [[nodiscard]] bool isConnected() const { return service.peerDescriptor() != -1; }

    ConnectedTcpService<TarvelServiceTcp> connection{[](TarvelServiceTcp& opened) { opened.dispatch(); }};
    TarvelServiceTcp& service = connection.service;
    TcpPeer& client = *connection.client;
    std::string out;
    std::string err;
};
