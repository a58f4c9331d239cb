// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Trace.h"

#include "client/output/Console.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

constexpr std::size_t mostTraced = 4096;

void trace(const Console& console, const std::string& peer, const char* direction, std::span<const std::byte> bytes)
{
    if (console.isVerbose()) {
        console.trace(fmt::format("{} {} {} bytes: {}", peer, direction, bytes.size(), hexText(bytes, mostTraced)));
    }
}

} // namespace

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

void traceSent(const Console& console, const std::string& peer, std::span<const std::byte> bytes)
{
    trace(console, peer, "<-", bytes);
}

void traceReceived(const Console& console, const std::string& peer, std::span<const std::byte> bytes)
{
    trace(console, peer, "->", bytes);
}
