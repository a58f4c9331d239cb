// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/Commands.h"
#include "protocol/TcpService.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// The commands that arrive on the TCP connection. Handlers receive the header and read their payload themselves; the
// connection stays open after each of them.
class TarvelServiceTcp final : public TcpService
{
public:
    ~TarvelServiceTcp() override = default;

    // Serves one message of the connection, or closes it when the header cannot be read or is refused.
    void dispatch();

    // The failure reply that all handlers share; returns the result of sendMessage.
    int sendFailureReply(const MessageHeader& request);

    // Command 1. Sources that are missing or unreadable are left out; the report itself never fails. A payload is
    // not read, on purpose: its bytes are taken as the next header. Returns the result of sendMessage.
    int processVersions(const MessageHeader& request);

    // Commands 7 and 8: stores the archive in the working directory, unpacks it there and deletes it. Command 8
    // answers and then runs the upgrade script, whose outcome the client never learns. Returns 0 when the archive
    // was unpacked, -1 otherwise.
    int processFwUpload(const MessageHeader& request);

    // Command 16; a payload is not read, as for the versions. Returns the result of sendMessage, or -1.
    int processTimeReferenceGet(const MessageHeader& request);

    // Command 17. Returns the result of sendMessage, or -1. A payload that is too big is left unread on purpose.
    int processTimeReferenceSet(const MessageHeader& request);

private:
    // Sends a success reply with `text` in its 8-bit section, cut to what fits into `buffer`.
    int sendText(const MessageHeader& request, std::span<char> buffer, std::string_view text);

    // Streams `size` bytes from the connection into the archive file, in pieces of at most 4096 bytes.
    int receiveFile(std::uint32_t size);

    // Reads the section that holds the archive into the archive file. 0 when it is stored; -1 after the reply, if
    // one is due.
    int receiveArchive(const MessageHeader& request);
};

struct TcpCommand {
    CommandId id;
    int (TarvelServiceTcp::*handle)(const MessageHeader& request);
};

// The table of commands: who handles which.
inline constexpr auto tcpCommands = std::to_array<TcpCommand>({
    {CommandId::versions, &TarvelServiceTcp::processVersions},
    {CommandId::firmwareUpload, &TarvelServiceTcp::processFwUpload},
    {CommandId::firmwareUpgrade, &TarvelServiceTcp::processFwUpload},
    {CommandId::timeReferenceGet, &TarvelServiceTcp::processTimeReferenceGet},
    {CommandId::timeReferenceSet, &TarvelServiceTcp::processTimeReferenceSet},
});
