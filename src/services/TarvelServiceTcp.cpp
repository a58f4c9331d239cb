// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceTcp.h"

#include <array>

namespace
{

struct Command {
    std::uint16_t id;
    int (TarvelServiceTcp::*handle)(const MessageHeader& request);
};

constexpr std::array<Command, 5> commands = {{
    {1, &TarvelServiceTcp::processVersions},
    {7, &TarvelServiceTcp::processFwUpload},
    {8, &TarvelServiceTcp::processFwUpload},
    {16, &TarvelServiceTcp::processTimeReferenceGet},
    {17, &TarvelServiceTcp::processTimeReferenceSet},
}};

} // namespace

void TarvelServiceTcp::dispatch()
{
    MessageHeader header = {};
    if (receiveHeader(header) != 0 || checkHeader(header) != 0) {
        peer->close();
        return;
    }
    for (const Command& command : commands) {
        if (command.id == header.commandId) {
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
