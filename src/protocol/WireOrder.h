// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

// The wire carries every multi-byte number least significant byte first. This is the one place that knows the
// byte order of the host.
inline constexpr bool hostIsBigEndian = std::endian::native == std::endian::big;

inline std::uint32_t readLittle32(std::span<const std::byte, 4> bytes)
{
    return std::to_integer<std::uint32_t>(bytes[0]) | std::to_integer<std::uint32_t>(bytes[1]) << 8 |
           std::to_integer<std::uint32_t>(bytes[2]) << 16 | std::to_integer<std::uint32_t>(bytes[3]) << 24;
}

inline void writeLittle32(std::span<std::byte, 4> bytes, std::uint32_t value)
{
    bytes[0] = static_cast<std::byte>(value);
    bytes[1] = static_cast<std::byte>(value >> 8);
    bytes[2] = static_cast<std::byte>(value >> 16);
    bytes[3] = static_cast<std::byte>(value >> 24);
}

// Convert `count` elements of 8, 4 or 2 bytes between host and wire order in place; data may be unaligned.
void convertWords64(void* data, std::size_t count);
void convertWords32(void* data, std::size_t count);
void convertWords16(void* data, std::size_t count);
