// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Descriptor.h"

#include <cstdint>
#include <span>
#include <string>
#include <sys/stat.h>

// A file that is opened once: what is read of it later is of the same file, whatever its name leads to by then, and it
// is noticed when somebody writes into it.
class HeldFile
{
public:
    HeldFile() = default;
    // False, with errno set, if it cannot be opened.
    explicit HeldFile(const std::string& path);
    explicit operator bool() const { return static_cast<bool>(file); }

    [[nodiscard]] int descriptor() const { return file.get(); }
    [[nodiscard]] bool isRegular() const { return S_ISREG(opened.st_mode); }
    [[nodiscard]] std::uint64_t size() const
    {
        return static_cast<std::uint64_t>(opened.st_size);
    } // when it was opened

    // As pread(2): up to as many bytes, from `offset` on.
    [[nodiscard]] ssize_t read(std::span<std::byte> bytes, std::uint64_t offset) const;

    // Has it the size and the date that it was opened with?
    [[nodiscard]] bool isUnchanged() const;

private:
    Descriptor file;
    struct stat opened = {};
};
