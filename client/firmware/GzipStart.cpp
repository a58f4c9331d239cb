// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/GzipStart.h"

#include <algorithm>
#include <archive.h>
#include <archive_entry.h>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace
{

constexpr std::size_t longestEmpty = 131072; // its header may hold a name and 64 KiB more

std::string beginningOf(const HeldFile& file)
{
    std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(longestEmpty, file.size())), '\0');
    const ssize_t size = file.read(std::as_writable_bytes(std::span(bytes)), 0);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
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

bool beginsWithEmptyGzip(const HeldFile& file)
{
    constexpr std::string_view border("\0\0\0\0\0\0\0\0\x1f\x8b", 10); // checksum and size of nothing, and the next one
    constexpr std::size_t ofTheNext = 2;
    const std::string bytes = beginningOf(file);
    // The same bytes may stand in the header, as a part of a name: each place is tried.
    for (std::size_t at = bytes.find(border); at != std::string::npos; at = bytes.find(border, at + 1)) {
        if (isEmptyGzip(std::string_view(bytes).substr(0, at + border.size() - ofTheNext))) {
            return true;
        }
    }
    return false;
}
