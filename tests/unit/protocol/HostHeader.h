// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/MessageHeader.h"
#include "support/SampleMessages.h"

// The record that the production code holds for a header, field by field, since their order is that of the host.
inline MessageHeader hostHeader(const SampleHeader& sample)
{
    MessageHeader header = {};
    header.startPattern = sample.startPattern;
    header.version = sample.version;
    header.messageFormat = sample.messageFormat;
    header.device = sample.device;
    header.service = sample.service;
    header.commandId = sample.commandId;
    header.status = sample.status;
    header.commandVersion = sample.commandVersion;
    header.sequenceId = sample.sequenceId;
    header.payloadLength = sample.payloadLength;
    return header;
}

// The same the other way round.
inline SampleHeader sampleOf(const MessageHeader& header)
{
    return {.startPattern = header.startPattern,
            .version = header.version,
            .messageFormat = header.messageFormat,
            .device = header.device,
            .service = header.service,
            .commandId = header.commandId,
            .status = header.status,
            .commandVersion = header.commandVersion,
            .sequenceId = header.sequenceId,
            .payloadLength = header.payloadLength};
}
