// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/GzipTrailer.h"

#include "protocol/WireOrder.h"

#include <array>

std::optional<std::uint32_t> sizeInGzipTrailer(const HeldFile& file)
{
    std::array<std::byte, 4> bytes = {};
    if (file.size() < bytes.size() ||
        file.read(bytes, file.size() - bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        return std::nullopt;
    }
    return readLittle32(bytes);
}
