// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/MessageHeader.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

// One UDP message exactly as it travels: the header, then the sections back to back. A request is received here,
// checked, and answered in place. It remembers how many bytes belong to the message, so that nothing of an earlier
// datagram is ever seen.
class DatagramBuffer
{
public:
    static constexpr std::size_t capacity = 4096;

    [[nodiscard]] MessageHeader& header() { return *reinterpret_cast<MessageHeader*>(storage.data()); }
    [[nodiscard]] const MessageHeader& header() const
    {
        return *reinterpret_cast<const MessageHeader*>(storage.data());
    }

    // The whole storage, to receive into; setLength() then says how much of it came.
    [[nodiscard]] std::span<std::byte, capacity> bytes() { return storage; }
    void setLength(std::size_t received) { length = received; }

    // The bytes behind the header that belong to the message; none for a message shorter than a header.
    [[nodiscard]] std::span<std::byte> sections();

    // The 8-bit section of a message that has no other, in host order: bounded by its count and by the bytes that
    // came. Empty when the section is missing.
    [[nodiscard]] std::string_view text() const;

    // Writes `text` with its terminating NUL as the only section. False, with nothing changed, if it does not fit.
    // The caller builds the header, with the payload length textSectionSize(text.size()).
    [[nodiscard]] bool setText(std::string_view text);

private:
    alignas(MessageHeader) std::array<std::byte, capacity> storage = {};
    std::size_t length = 0;
};

// Convert the sections that the format announces between wire and host order, in place. Both walk only the bytes
// they are given: a count that reaches beyond them ends the walk. Encoding is a routine of its own because it must
// use a count before it is reversed, decoding after.
void decodeDatagramSections(std::uint8_t messageFormat, std::span<std::byte> sections);
void encodeDatagramSections(std::uint8_t messageFormat, std::span<std::byte> sections);
