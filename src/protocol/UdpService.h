// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "net/UdpServer.h"
#include "protocol/DatagramBuffer.h"
#include "protocol/ZetService.h"

#include <cstdint>
#include <memory>

#include <netinet/in.h>

// The datagram variant: one socket on one network device and one buffer in which a request is received, checked
// and, as a rule, answered in place.
class UdpService : public ZetService
{
public:
    // Returns 0, or -1 if the socket cannot be made to broadcast.
    int open(const ServiceConfig& itsConfig) override;
    int close() override;

    // Answers the sender itself; returns the result of sendDatagram.
    int handleUnknownCommand(const MessageHeader& header) override;

    // 0 to handle the request. 1 to drop it without an answer: it is for another device, or another card's reply.
    // -1 when the sender has been told of a wrong service or version. Everything but 0 is logged.
    int checkHeader(const MessageHeader& header) override;

    // Receives one datagram and converts it to host order; a format with bit 7 set leaves the sections as they
    // came. Returns 0, or -1 when receiving failed or the datagram is too short for a header; both are logged.
    int receiveDatagram();

    // Sends the message in the buffer, which is left in wire order. `address` in network order, `port` in host
    // order. Returns 0, or -1 after logging. The hardened build sends nothing to the port of another card.
    int sendDatagram(std::uint32_t address, std::uint16_t port);

    // For the event loop: -1 when there is no descriptor.
    [[nodiscard]] int descriptor() const { return server ? server->descriptor() : -1; }

protected:
    [[nodiscard]] std::uint16_t senderPort() const;

    // Turns the message in the buffer into a reply without payload and sends it to the sender.
    int sendStatusToSender(const MessageHeader& request, Status status);

    std::unique_ptr<UdpServer> server;
    std::unique_ptr<DatagramBuffer> datagram;
    sockaddr_in sender = {}; // of the last datagram
};
