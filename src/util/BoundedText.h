// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

// Copies as much of `text` as fits into `buffer` with a terminating NUL and returns the length that was kept.
// REQUIRES: buffer holds at least one byte.
inline std::size_t copyText(std::span<char> buffer, std::string_view text)
{
    const std::size_t kept = text.copy(buffer.data(), buffer.size() - 1);
    buffer[kept] = '\0';
    return kept;
}
