// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

// A message header as it travels, written down independently of the daemon's own codec: the least significant byte of
// each field comes first. The defaults are those of a valid request.
struct SampleHeader {
    std::uint32_t startPattern = 0xFF9AC381;
    std::uint8_t version = 1;
    std::uint8_t messageFormat = 0;
    std::uint8_t device = 5;
    std::uint8_t service = 4;
    std::uint16_t commandId = 1;
    std::uint8_t status = 0;
    std::uint8_t commandVersion = 1;
    std::uint32_t sequenceId = 0x0A0B0C0D;
    std::uint32_t payloadLength = 0;

    static constexpr std::size_t size = 20;
    bool operator==(const SampleHeader&) const = default;

    [[nodiscard]] Bytes bytes() const;
    static SampleHeader from(std::span<const std::uint8_t> message);
};

// The header that answers `request` with this status and no payload.
SampleHeader replyTo(const SampleHeader& request, std::uint8_t status);

// A section: its byte count, then its bytes. That of a text counts and holds the terminating NUL.
Bytes section(std::span<const std::uint8_t> content);
Bytes textSection(std::string_view text);

// A whole message with one 8-bit section that holds `text`; format and payload length of `header` are filled in.
Bytes textMessage(SampleHeader header, std::string_view text);
Bytes textRequest(std::uint16_t commandId, std::string_view text);

// The text of a message's 8-bit section, when that is its only section.
std::string textOf(std::span<const std::uint8_t> message);

Bytes operator+(Bytes left, const Bytes& right);
Bytes little32(std::uint32_t value);
std::string hex(std::span<const std::uint8_t> bytes); // "81c39aff 01010504 ..."
