// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/HexText.h"

#include <algorithm>
#include <fmt/core.h>

std::string hexText(std::span<const std::byte> bytes, std::size_t most)
{
    std::string text;
    const std::size_t shown = std::min(bytes.size(), most);
    for (std::size_t index = 0; index < shown; ++index) {
        text += index > 0 && index % 4 == 0 ? " " : "";
        text += fmt::format("{:02x}", std::to_integer<unsigned>(bytes[index]));
    }
    return shown < bytes.size() ? text + " ..." : text;
}
