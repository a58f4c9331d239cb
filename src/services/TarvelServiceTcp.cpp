// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceTcp.h"

void TarvelServiceTcp::dispatch()
{
    MessageHeader header = {};
    if (receiveHeader(header) != 0 || checkHeader(header) != 0) {
        peer->close();
        return;
    }
    for (const TcpCommand& command : tcpCommands) {
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
