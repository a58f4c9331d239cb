// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "protocol/MessageHeader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// The 8-bit section as every text travels in it: a count of bytes, the text, a NUL that is counted along.

// How the count stands in memory: as it travels, or converted, as in a datagram that has been received.
enum class CountOrder { wire, host };

// What the section of a text of `length` characters counts, and its size with the count: the payload length of a
// message that has no other section.
[[nodiscard]] constexpr std::uint32_t textCount(std::size_t length)
{
    return static_cast<std::uint32_t>(length + 1);
}
[[nodiscard]] constexpr std::uint32_t textSectionSize(std::size_t length)
{
    return sectionCountSize + textCount(length);
}

// Writes the section of `text` to the front of `bytes`. False, with nothing changed, if it does not fit.
[[nodiscard]] bool writeTextSection(std::span<std::byte> bytes, std::string_view text, CountOrder order);

// What the section at the front of `bytes` holds, up to its count or, if that reaches too far, to their end. Empty if
// not even the count is there.
[[nodiscard]] std::string_view readTextSection(std::span<const std::byte> bytes, CountOrder order);
