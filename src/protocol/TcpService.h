// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "net/PeerDefence.h"
#include "net/TcpServer.h"
#include "net/TcpSocket.h"
#include "protocol/Message.h"
#include "protocol/ZetService.h"

#include <memory>

// The stream variant: a listening socket and the one connection that is served at a time.
class TcpService : public ZetService
{
public:
    // Right after open() the peer holds a fresh, unconnected socket rather than none. The event loop finds it
    // readable, fails to read from it and closes it; from then on connections are accepted.
    int open(const ServiceConfig& itsConfig) override;
    int close() override;

    // Reads and drops the payload first, so that the stream stays in step. Returns -1, without a reply, if the
    // payload cannot be read.
    int handleUnknownCommand(const MessageHeader& header) override;

    // A wrong version wins over a wrong device, which wins over a wrong service; each is answered, nothing is
    // logged, and -1 is returned.
    int checkHeader(const MessageHeader& header) override;

    // Reads one header from the peer and converts it to host order. Returns 0, or -1 when it did not come in full.
    int receiveHeader(MessageHeader& header);

    // Sends the header and then, if its payload length is not 0, the sections that it announces, in wire order.
    // The message's sections are in wire order afterwards. Always returns 0: a peer that went away is noticed on
    // the next receive.
    int sendMessage(Message& message);

    // Sends a reply without payload; returns the result of sendMessage.
    int sendStatus(const MessageHeader& request, Status status);

    // For the event loop: -1 when there is no such descriptor.
    [[nodiscard]] int peerDescriptor() const { return peer ? peer->descriptor() : -1; }
    [[nodiscard]] int serverDescriptor() const { return server ? server->descriptor() : -1; }
    int acceptPeer() { return server->accept(*peer); }
    void dropPeersUrgentByte() { dropUrgentByte(peer->descriptor()); }

protected:
    std::unique_ptr<TcpServer> server;
    std::unique_ptr<TcpSocket> peer;
};
