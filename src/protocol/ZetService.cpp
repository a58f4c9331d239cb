// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "protocol/ZetService.h"

#include "util/Log.h"

ZetService::~ZetService() = default;

void ZetService::buildReplyHeader(MessageHeader& header, std::uint8_t messageFormat, std::uint16_t commandId,
                                  Status status, std::uint8_t commandVersion, std::uint32_t sequenceId,
                                  std::uint32_t payloadLength) const
{
    header.startPattern = headerStartPattern;
    header.version = protocolVersion;
    header.messageFormat = messageFormat & replyFormatMask;
    header.device = config.deviceNumber;
    header.service = config.serviceNumber;
    header.commandId = commandId | replyFlag;
    header.status = static_cast<std::uint8_t>(status);
    header.commandVersion = commandVersion;
    header.sequenceId = sequenceId;
    header.payloadLength = payloadLength;
}

void ZetService::buildStatusReply(MessageHeader& reply, const MessageHeader& request, Status status) const
{
    buildReplyHeader(reply, 0, request.commandId, status, currentCommandVersion, request.sequenceId, 0);
}

void ZetService::buildTextReply(MessageHeader& reply, const MessageHeader& request, std::uint32_t payloadLength) const
{
    buildReplyHeader(reply, section8Bit, request.commandId, Status::success, currentCommandVersion, request.sequenceId,
                     payloadLength);
}

bool ZetService::hasOnlyTextSection(const MessageHeader& header, const char* warning)
{
    if ((header.messageFormat & sectionMask) == section8Bit) {
        return true;
    }
    logWarning("%s", warning);
    dumpHeader(header);
    return false;
}
