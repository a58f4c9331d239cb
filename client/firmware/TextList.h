// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/PackedBytes.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

// Texts by their numbers, in little room, because there may be hundreds of thousands of them: of most of them only that
// is kept in which they differ from the one before.
class TextList
{
public:
    std::uint32_t add(const std::string& text); // its number
    [[nodiscard]] std::string at(std::uint32_t number) const;

private:
    PackedBytes bytes;
    std::deque<std::size_t> starts; // of those that are kept whole
    std::string last;
    std::uint32_t count = 0;
};
