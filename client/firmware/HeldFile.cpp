// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/HeldFile.h"

#include <fcntl.h>
#include <unistd.h>

namespace
{

bool isSame(const timespec& one, const timespec& other)
{
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

} // namespace

HeldFile::HeldFile(const std::string& path) : file(::open(path.c_str(), O_RDONLY | O_CLOEXEC))
{
    // What is not known now cannot be seen to change later.
    if (file && ::fstat(file.get(), &opened) == -1) {
        file.reset();
    }
}

ssize_t HeldFile::read(std::span<std::byte> bytes, std::uint64_t offset) const
{
    // With an offset, so that several readers of one archive do not move each other's place.
    return ::pread(file.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
}

bool HeldFile::isUnchanged() const
{
    struct stat now = {};
    return ::fstat(file.get(), &now) == 0 && now.st_size == opened.st_size && isSame(now.st_mtim, opened.st_mtim);
}
