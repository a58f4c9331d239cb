// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Frame.h"

#include "protocol/TextSection.h"

#include <algorithm>
#include <cstring>
#include <fmt/core.h>
#include <random>

namespace
{

std::uint32_t randomNumber()
{
    static std::random_device device; // another process on the same port must not meet the same numbers
    return device();
}

Failure refused()
{
    return {ExitCode::refusedByCard,
            Category::refusedByCard,
            {},
            "the card answered that the command failed (status 2); its log names the reason"};
}

Failure rejected(Category category, std::string_view what)
{
    return {ExitCode::protocol, category, {}, fmt::format("the card does not accept {}", what)};
}

} // namespace

Request bareRequest(CommandId command)
{
    Request request;
    request.header.startPattern = headerStartPattern;
    request.header.version = protocolVersion;
    request.header.device = cardDevice;
    request.header.service = cardService;
    request.header.commandId = static_cast<std::uint16_t>(command);
    request.header.commandVersion = currentCommandVersion;
    request.header.sequenceId = randomNumber();
    return request;
}

Request textRequest(CommandId command, std::string xml)
{
    Request request = bareRequest(command);
    request.header.messageFormat = section8Bit;
    request.payload = textSection(xml);
    request.xml = std::move(xml);
    return request;
}

Bytes textSection(std::string_view text)
{
    Bytes section(textSectionSize(text.size()));
    static_cast<void>(writeTextSection(section, text, CountOrder::wire));
    return section;
}

bool changesNothing(const Request& request)
{
    return factsOf(static_cast<CommandId>(request.header.commandId)).effect == Effect::reads;
}

Bytes encode(const Request& request)
{
    MessageHeader header = request.header;
    header.payloadLength = static_cast<std::uint32_t>(request.payload.size() + request.streamed);
    swapHeaderWords(header);
    Bytes bytes(headerSize + request.payload.size());
    std::memcpy(bytes.data(), &header, headerSize);
    std::copy(request.payload.begin(), request.payload.end(), bytes.begin() + headerSize);
    return bytes;
}

MessageHeader decodeHeader(std::span<const std::byte, headerSize> bytes)
{
    MessageHeader header;
    std::memcpy(&header, bytes.data(), headerSize);
    swapHeaderWords(header);
    return header;
}

bool answers(const MessageHeader& reply, const Request& request)
{
    return reply.commandId == (request.header.commandId | replyFlag) && reply.sequenceId == request.header.sequenceId;
}

void checkReplyHeader(const MessageHeader& reply, const Request& request)
{
    if (reply.startPattern != headerStartPattern) {
        throw garbage("what came does not start like a card's message; is this a card at all?");
    }
    if (reply.version != protocolVersion) {
        throw garbage(fmt::format("the answer has protocol version {}, not {}", reply.version, protocolVersion));
    }
    // Device and service are not compared: whoever asks for a wrong one is answered with the card's own.
    if (!answers(reply, request)) {
        throw garbage(fmt::format("what came is no answer to this request (command 0x{:04x}, sequence 0x{:08x})",
                                  reply.commandId, reply.sequenceId));
    }
    if (reply.payloadLength > longestReplyPayload) {
        throw garbage(fmt::format("the answer announces {} bytes", reply.payloadLength));
    }
}

std::string textOf(const Reply& reply)
{
    if ((reply.header.messageFormat & sectionMask) != section8Bit) {
        throw garbage(fmt::format("the answer has message format 0x{:02x}, not one text", reply.header.messageFormat));
    }
    if (reply.payload.size() < textSectionSize(0)) {
        throw garbage("the answer's text is missing");
    }
    // readTextSection() would cut what does not fit; here it has to be told.
    const std::uint32_t count = readLittle32(std::span(reply.payload).first<sectionCountSize>());
    if (count != reply.payload.size() - sectionCountSize) {
        throw garbage(fmt::format("the answer's text has {} bytes where {} are announced",
                                  reply.payload.size() - sectionCountSize, count));
    }
    const std::string_view content = readTextSection(reply.payload, CountOrder::wire);
    const std::string_view text = content.substr(0, content.find('\0'));
    // Bytes behind the NUL would be seen by nobody, and one that is missing means that something was cut.
    if (text.size() + 1 != content.size()) {
        throw garbage("the answer's text is not ended by its one NUL");
    }
    return std::string(text);
}

void checkStatus(const MessageHeader& reply)
{
    // Without a default, so that the compiler misses here a status that is new.
    switch (static_cast<Status>(reply.status)) {
    case Status::success:
        return;
    case Status::failure:
        throw refused();
    case Status::wrongVersion:
        throw rejected(Category::wrongVersion, "this protocol version (status 3)");
    case Status::wrongDevice:
        throw rejected(Category::wrongDevice, "this device number (status 4)");
    case Status::wrongService:
        throw rejected(Category::wrongService, "this service number (status 5)");
    case Status::unknownCommand:
        throw rejected(Category::unknownCommand, "this command: it does not know it (status 6)");
    }
    throw garbage(fmt::format("the answer has the unknown status {}", reply.status));
}
