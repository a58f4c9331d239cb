// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Frame.h"

#include "protocol/WireOrder.h"

#include <cstring>
#include <fmt/core.h>
#include <random>

namespace
{

constexpr std::size_t countSize = 4;

std::uint32_t randomNumber()
{
    static std::random_device device; // another process on the same port must not meet the same numbers
    return device();
}

Failure refused(const std::string& phase)
{
    return {ExitCode::refusedByCard, "refused-by-card", phase,
            "the card answered that the command failed (status 2); its log names the reason"};
}

Failure rejected(const char* category, const std::string& phase, std::string_view what)
{
    return {ExitCode::protocol, category, phase, fmt::format("the card does not accept {}", what)};
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
    Bytes section(countSize + text.size() + 1); // the last byte is the NUL
    writeLittle32(std::span(section).first<countSize>(), static_cast<std::uint32_t>(text.size() + 1));
    std::memcpy(section.data() + countSize, text.data(), text.size());
    return section;
}

Bytes encodeHeader(MessageHeader header)
{
    swapHeaderWords(header);
    Bytes bytes(headerSize);
    std::memcpy(bytes.data(), &header, headerSize);
    return bytes;
}

Bytes encode(const Request& request)
{
    MessageHeader header = request.header;
    header.payloadLength = static_cast<std::uint32_t>(request.payload.size());
    Bytes bytes = encodeHeader(header);
    bytes.insert(bytes.end(), request.payload.begin(), request.payload.end());
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

Failure garbage(std::string phase, std::string hint)
{
    return {ExitCode::protocol, "garbage", std::move(phase), std::move(hint)};
}

void checkReplyHeader(const MessageHeader& reply, const Request& request, const std::string& phase)
{
    if (reply.startPattern != headerStartPattern) {
        throw garbage(phase, "what came does not start like a card's message; is this a card at all?");
    }
    if (reply.version != protocolVersion) {
        throw garbage(phase, fmt::format("the answer has protocol version {}, not {}", reply.version, protocolVersion));
    }
    if (!answers(reply, request)) {
        throw garbage(phase, fmt::format("what came is no answer to this request (command 0x{:04x}, sequence 0x{:08x})",
                                         reply.commandId, reply.sequenceId));
    }
    if (reply.payloadLength > longestReplyPayload) {
        throw garbage(phase, fmt::format("the answer announces {} bytes", reply.payloadLength));
    }
}

std::string textOf(const Reply& reply, const std::string& phase)
{
    if ((reply.header.messageFormat & sectionMask) != section8Bit) {
        throw garbage(phase,
                      fmt::format("the answer has message format 0x{:02x}, not one text", reply.header.messageFormat));
    }
    if (reply.payload.size() < countSize + 1) {
        throw garbage(phase, "the answer's text is missing");
    }
    const std::uint32_t count = readLittle32(std::span(reply.payload).first<countSize>());
    if (count != reply.payload.size() - countSize) {
        throw garbage(phase, fmt::format("the answer's text has {} bytes where {} are announced",
                                         reply.payload.size() - countSize, count));
    }
    const char* text = reinterpret_cast<const char*>(reply.payload.data()) + countSize;
    const std::size_t length = ::strnlen(text, count);
    if (length != count - 1) {
        throw garbage(phase, "the answer's text is not ended by its one NUL");
    }
    return {text, length};
}

void checkStatus(const MessageHeader& reply, const std::string& phase)
{
    switch (static_cast<Status>(reply.status)) {
    case Status::success:
        return;
    case Status::failure:
        throw refused(phase);
    case Status::wrongVersion:
        throw rejected("wrong-version", phase, "this protocol version (status 3)");
    case Status::wrongDevice:
        throw rejected("wrong-device", phase, "this device number (status 4)");
    case Status::wrongService:
        throw rejected("wrong-service", phase, "this service number (status 5)");
    case Status::unknownCommand:
        throw rejected("unknown-command", phase, "this command: it does not know it (status 6)");
    }
    throw garbage(phase, fmt::format("the answer has the unknown status {}", reply.status));
}
