// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Base64.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace
{

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t group = 3; // bytes that four letters hold

} // namespace

std::string inBase64(std::span<const std::byte> bytes)
{
    std::string text;
    for (std::size_t first = 0; first < bytes.size(); first += group) {
        const std::span<const std::byte> taken = bytes.subspan(first, std::min(group, bytes.size() - first));
        std::uint32_t bits = 0;
        for (std::size_t index = 0; index < group; ++index) {
            bits = bits << 8U | (index < taken.size() ? std::to_integer<std::uint32_t>(taken[index]) : 0);
        }
        for (std::size_t letter = 0; letter <= group; ++letter) {
            text += letter <= taken.size() ? alphabet[bits >> (18U - 6U * letter) & 0x3FU] : '=';
        }
    }
    return text;
}
