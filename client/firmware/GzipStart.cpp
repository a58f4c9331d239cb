// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/GzipStart.h"

#include "client/engine/Descriptor.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <unistd.h>

namespace
{

constexpr std::size_t longestEmpty = 131072; // its header may hold a name and 64 KiB more

std::string beginningOf(const std::string& path)
{
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string bytes(longestEmpty, '\0');
    std::size_t filled = 0;
    while (file && filled < bytes.size()) {
        const ssize_t size = ::read(file.get(), bytes.data() + filled, bytes.size() - filled);
        if (size <= 0) {
            break;
        }
        filled += static_cast<std::size_t>(size);
    }
    bytes.resize(filled);
    return bytes;
}

bool isEmptyGzip(std::string_view bytes)
{
    const std::unique_ptr<archive, int (*)(archive*)> reader(archive_read_new(), archive_read_free);
    archive_read_support_filter_gzip(reader.get());
    archive_read_support_format_empty(reader.get());
    archive_entry* entry = nullptr;
    return archive_read_open_memory(reader.get(), bytes.data(), bytes.size()) == ARCHIVE_OK &&
           archive_read_next_header(reader.get(), &entry) == ARCHIVE_EOF &&
           archive_filter_code(reader.get(), 0) == ARCHIVE_FILTER_GZIP;
}

} // namespace

bool beginsWithEmptyGzip(const std::string& path)
{
    constexpr std::string_view border("\0\0\0\0\0\0\0\0\x1f\x8b", 10); // checksum and size of nothing, and the next one
    constexpr std::size_t ofTheNext = 2;
    const std::string bytes = beginningOf(path);
    for (std::size_t at = bytes.find(border); at != std::string::npos; at = bytes.find(border, at + 1)) {
        if (isEmptyGzip(std::string_view(bytes).substr(0, at + border.size() - ofTheNext))) {
            return true;
        }
    }
    return false;
}
