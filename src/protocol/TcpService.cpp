// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/TcpService.h"

#include "util/Log.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include <sys/socket.h>

namespace
{

// A message leaves in up to nine pieces: the header, then a count and the data of each section.
class Pieces
{
public:
    void add(const void* data, std::uint32_t size)
    {
        if (size > 0) {
            pieces[used] = {data, size};
            ++used;
        }
    }

    // One send for each piece. All but the last announce that more follows: a short piece that waited for the
    // acknowledgement of the one before would delay every reply on a kept connection.
    void sendTo(TcpSocket& peer) const
    {
        for (std::size_t i = 0; i < used; ++i) {
            const int flags = i + 1 < used ? MSG_MORE : 0;
            // On purpose: a peer that went away is noticed on the next receive.
            peer.send(pieces[i].data, static_cast<int>(pieces[i].size), flags);
        }
    }

private:
    struct Piece {
        const void* data;
        std::uint32_t size;
    };

    std::array<Piece, 9> pieces = {};
    std::size_t used = 0;
};

} // namespace

int TcpService::open(const ServiceConfig& itsConfig)
{
    config = itsConfig;
    peer = std::make_unique<TcpSocket>();
    server = std::make_unique<TcpServer>(config.port);
    return 0;
}

int TcpService::close()
{
    peer.reset();
    server.reset();
    return 0;
}

int TcpService::receiveHeader(MessageHeader& header)
{
    if (peer->receive(&header, static_cast<int>(headerSize), 0) < 1) {
        return -1;
    }
    swapHeaderWords(header);
    return 0;
}

int TcpService::checkHeader(const MessageHeader& header)
{
    if (header.version != protocolVersion) {
        sendStatus(header, Status::wrongVersion);
        return -1;
    }
    if (header.device != config.deviceNumber) {
        sendStatus(header, Status::wrongDevice);
        return -1;
    }
    if (header.service != config.serviceNumber) {
        sendStatus(header, Status::wrongService);
        return -1;
    }
    return 0;
}

int TcpService::sendMessage(Message& message)
{
    MessageHeader& header = message.header;
    header.messageFormat &= static_cast<std::uint8_t>(~rawSectionsFlag);
    const std::uint8_t format = header.payloadLength == 0 ? std::uint8_t{0} : header.messageFormat;

    // The pieces are collected while the counts can still be read, and only then is everything converted in place:
    // a piece points to its bytes, so it sends what stands there in the end.
    Pieces pieces;
    pieces.add(&header, headerSize);
    const auto addSection = [&](std::uint8_t formatBit, const Section& section) {
        if ((format & formatBit) != 0) {
            pieces.add(&section.count, sizeof section.count);
            pieces.add(section.data, section.count);
        }
    };
    addSection(section64Bit, message.section64);
    addSection(section32Bit, message.section32);
    addSection(section16Bit, message.section16);
    addSection(section8Bit, message.section8);

    if (format != 0) {
        swapSections(message);
    }
    swapHeaderWords(header);
    pieces.sendTo(*peer);
    swapHeaderWords(header); // the caller's again
    return 0;
}

int TcpService::sendStatus(const MessageHeader& request, Status status)
{
    Message reply;
    buildStatusReply(reply.header, request, status);
    return sendMessage(reply);
}

int TcpService::handleUnknownCommand(const MessageHeader& header)
{
    std::array<std::byte, 4096> scratch;
    for (std::size_t remaining = header.payloadLength; remaining > 0;) {
        const std::size_t piece = std::min(remaining, scratch.size());
        if (peer->receive(std::span(scratch).first(piece)) < 1) {
            return -1;
        }
        remaining -= piece;
    }
    logWarning("Unknown command ID: 0x%x", header.commandId);
    return sendStatus(header, Status::unknownCommand);
}
