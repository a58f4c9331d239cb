// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/GzipTrailer.h"

#include "client/engine/Descriptor.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

std::optional<std::uint32_t> sizeInGzipTrailer(const std::string& path)
{
    std::array<unsigned char, 4> bytes = {};
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file || ::lseek(file.get(), -static_cast<off_t>(bytes.size()), SEEK_END) == -1 ||
        ::read(file.get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        return std::nullopt;
    }
    return bytes[0] | (std::uint32_t{bytes[1]} << 8) | (std::uint32_t{bytes[2]} << 16) |
           (std::uint32_t{bytes[3]} << 24);
}
