// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/SampleMessages.h"

#include <stdexcept>

namespace
{

template<typename Integer>
void append(Bytes& bytes, Integer value)
{
    for (std::size_t i = 0; i < sizeof value; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

template<typename Integer>
Integer take(std::span<const std::uint8_t>& rest)
{
    if (rest.size() < sizeof(Integer)) {
        throw std::out_of_range("the message is too short");
    }
    Integer value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) {
        value = static_cast<Integer>(value | static_cast<Integer>(rest[i]) << (8 * i));
    }
    rest = rest.subspan(sizeof value);
    return value;
}

} // namespace

Bytes SampleHeader::bytes() const
{
    Bytes all;
    append(all, startPattern);
    append(all, version);
    append(all, messageFormat);
    append(all, device);
    append(all, service);
    append(all, commandId);
    append(all, status);
    append(all, commandVersion);
    append(all, sequenceId);
    append(all, payloadLength);
    return all;
}

SampleHeader SampleHeader::from(std::span<const std::uint8_t> message)
{
    SampleHeader header;
    header.startPattern = take<std::uint32_t>(message);
    header.version = take<std::uint8_t>(message);
    header.messageFormat = take<std::uint8_t>(message);
    header.device = take<std::uint8_t>(message);
    header.service = take<std::uint8_t>(message);
    header.commandId = take<std::uint16_t>(message);
    header.status = take<std::uint8_t>(message);
    header.commandVersion = take<std::uint8_t>(message);
    header.sequenceId = take<std::uint32_t>(message);
    header.payloadLength = take<std::uint32_t>(message);
    return header;
}

SampleHeader replyTo(const SampleHeader& request, std::uint8_t status)
{
    SampleHeader reply;
    reply.commandId = static_cast<std::uint16_t>(request.commandId | 0x8000);
    reply.status = status;
    reply.sequenceId = request.sequenceId;
    return reply;
}

Bytes section(std::span<const std::uint8_t> content)
{
    Bytes bytes = little32(static_cast<std::uint32_t>(content.size()));
    bytes.insert(bytes.end(), content.begin(), content.end());
    return bytes;
}

Bytes textSection(std::string_view text)
{
    Bytes content(text.begin(), text.end());
    content.push_back(0);
    return section(content);
}

Bytes textMessage(SampleHeader header, std::string_view text)
{
    const Bytes payload = textSection(text);
    header.messageFormat = 1;
    header.payloadLength = static_cast<std::uint32_t>(payload.size());
    return header.bytes() + payload;
}

Bytes textRequest(std::uint16_t commandId, std::string_view text)
{
    return textMessage({.commandId = commandId}, text);
}

std::string textOf(std::span<const std::uint8_t> message)
{
    std::span<const std::uint8_t> rest = message.subspan(SampleHeader::size);
    const auto count = take<std::uint32_t>(rest);
    if (count == 0 || count != rest.size() || rest.back() != 0) {
        throw std::invalid_argument("no terminated text of the announced length");
    }
    return {rest.begin(), rest.end() - 1};
}

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes little32(std::uint32_t value)
{
    Bytes bytes;
    append(bytes, value);
    return bytes;
}

std::string hex(std::span<const std::uint8_t> bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 4 == 0) {
            text += ' ';
        }
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}
