// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceTcp.h"

#include "protocol/Commands.h"

#include <array>

namespace
{

struct Command {
    CommandId id;
    int (TarvelServiceTcp::*handle)(const MessageHeader& request);
};

constexpr auto commands = std::to_array<Command>({
    {CommandId::versions, &TarvelServiceTcp::processVersions},
    {CommandId::firmwareUpload, &TarvelServiceTcp::processFwUpload},
    {CommandId::firmwareUpgrade, &TarvelServiceTcp::processFwUpload},
    {CommandId::timeReferenceGet, &TarvelServiceTcp::processTimeReferenceGet},
    {CommandId::timeReferenceSet, &TarvelServiceTcp::processTimeReferenceSet},
});

} // namespace

void TarvelServiceTcp::dispatch()
{
    MessageHeader header = {};
    if (receiveHeader(header) != 0 || checkHeader(header) != 0) {
        peer->close();
        return;
    }
    for (const Command& command : commands) {
        if (command.id == static_cast<CommandId>(header.commandId)) {
            (this->*command.handle)(header);
            return;
        }
    }
    handleUnknownCommand(header);
}

int TarvelServiceTcp::sendFailureReply(const MessageHeader& request)
{
    return sendStatus(request, Status::failure);
}

int TarvelServiceTcp::sendText(const MessageHeader& request, std::span<char> buffer, std::string_view text)
{
    Message reply;
    const std::uint32_t payloadLength = reply.setText(buffer, text);
    buildTextReply(reply.header, request, payloadLength);
    return sendMessage(reply);
}
