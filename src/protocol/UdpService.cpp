// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/UdpService.h"

#include "protocol/Commands.h"
#include "util/Hardened.h"
#include "util/Log.h"

#include <arpa/inet.h>

int UdpService::open(const ServiceConfig& itsConfig)
{
    config = itsConfig;
    server = std::make_unique<UdpServer>(config.port, config.bindDevice != 0 ? config.deviceName : "");
    datagram = std::make_unique<DatagramBuffer>();
    return config.broadcast != 0 ? server->setBroadcast(1) : 0;
}

int UdpService::close()
{
    server.reset();
    datagram.reset();
    return 0;
}

int UdpService::receiveDatagram()
{
    sender = {};
    const int received = server->receiveFrom(datagram->bytes().data(), DatagramBuffer::capacity, &sender, 0);
    if (received == -1) {
        return -1;
    }
    logInfo("Got datagram of %d bytes from %s on port %hu", received, inet_ntoa(sender.sin_addr), senderPort());
    if (received < static_cast<int>(headerSize)) {
        logWarning("Datagram of %d bytes is too short for a header, drop it", received);
        return -1;
    }

    datagram->setLength(static_cast<std::size_t>(received));
    MessageHeader& header = datagram->header();
    swapHeaderWords(header);
    if (header.payloadLength != 0 && (header.messageFormat & rawSectionsFlag) == 0) {
        decodeDatagramSections(header.messageFormat, datagram->sections());
    }
    return 0;
}

int UdpService::checkHeader(const MessageHeader& header)
{
    const bool wrongService = header.service != config.serviceNumber;
    const bool wrongVersion = header.version != protocolVersion;
    if (wrongService) {
        logWarning("Wrong service field in header: %u instead of %u", header.service, config.serviceNumber);
    }
    if (wrongVersion) {
        logWarning("Wrong version field in header: %u instead of %u", header.version, protocolVersion);
    }
    if (wrongService || wrongVersion) {
        sendStatusToSender(header, wrongVersion ? Status::wrongVersion : Status::wrongService);
        return -1;
    }

    // Every card on the network hears a broadcast: those that it is not for must not answer, nor take each other's
    // answers for requests.
    const bool otherDevice = header.device != config.deviceNumber;
    const bool reply = (header.commandId & replyFlag) != 0;
    if (otherDevice) {
        logInfo("Got datagram for device %u, drop it", header.device);
    }
    if (reply) {
        logInfo("Got a response from another card, drop it");
    }
    return otherDevice || reply ? 1 : 0;
}

int UdpService::sendDatagram(std::uint32_t address, std::uint16_t port)
{
    if constexpr (hardened) {
        // Only cards have this port: they would take each other's answers for requests, for ever.
        if (port == cardPort) {
            logInfo("Nothing is sent to port %hu, which is a card's", port);
            return 0;
        }
    }
    sockaddr_in destination = {};
    destination.sin_family = AF_INET;
    destination.sin_port = htons(port);
    destination.sin_addr.s_addr = address;

    MessageHeader& header = datagram->header();
    header.messageFormat &= static_cast<std::uint8_t>(~rawSectionsFlag);
    // What the header says is needed until its words are converted, so they come last.
    const std::size_t size = headerSize + header.payloadLength;
    if (header.payloadLength != 0) {
        encodeDatagramSections(header.messageFormat, datagram->sections());
    }
    swapHeaderWords(header);
    return server->sendTo(datagram->bytes().data(), size, &destination, 0) == -1 ? -1 : 0;
}

int UdpService::handleUnknownCommand(const MessageHeader& header)
{
    logWarning("Unknown command ID: 0x%x", header.commandId);
    return sendStatusToSender(header, Status::unknownCommand);
}

std::uint16_t UdpService::senderPort() const
{
    return ntohs(sender.sin_port);
}

int UdpService::sendStatusToSender(const MessageHeader& request, Status status)
{
    buildStatusReply(datagram->header(), request, status);
    return sendDatagram(sender.sin_addr.s_addr, senderPort());
}
