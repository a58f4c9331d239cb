// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/MessageHeader.h"
#include "protocol/ServiceConfig.h"

#include <cstdint>

// A service that answers messages for one device and service number. The base of the stream and the datagram
// variant; it knows how a reply starts, and nothing of how bytes move.
class ZetService
{
public:
    ZetService() = default;
    virtual ~ZetService();

    // Keeps a copy of `config` and creates the sockets; throws SetupError after logging. Returns 0, or -1.
    virtual int open(const ServiceConfig& config) = 0;

    // Destroys the sockets; called once, at shutdown. Returns 0.
    virtual int close() = 0;

    // Answers a request with status 6. Returns 0, or -1.
    virtual int handleUnknownCommand(const MessageHeader& header) = 0;

    // Returns 0 to handle the request; any other value means that it has been dealt with.
    virtual int checkHeader(const MessageHeader& header) = 0;

    ZetService(const ZetService&) = delete;
    ZetService& operator=(const ZetService&) = delete;

    // Fills every field of `header`, in host order, with the service's own device and service numbers and the
    // reply flag. Bits 5 and 6 of `messageFormat` are dropped.
    void buildReplyHeader(MessageHeader& header, std::uint8_t messageFormat, std::uint16_t commandId, Status status,
                          std::uint8_t commandVersion, std::uint32_t sequenceId, std::uint32_t payloadLength) const;

    // The reply to `request` that carries only a status. `reply` may be the request's own header.
    void buildStatusReply(MessageHeader& reply, const MessageHeader& request, Status status) const;

    // The reply to `request` that succeeds with a text. `reply` may be the request's own header.
    void buildTextReply(MessageHeader& reply, const MessageHeader& request, std::uint32_t payloadLength) const;

protected:
    // Whether the 8-bit section is the only one announced. If not, logs `warning` and dumps the header.
    [[nodiscard]] static bool hasOnlyTextSection(const MessageHeader& header, const char* warning);

    ServiceConfig config = {};
};
