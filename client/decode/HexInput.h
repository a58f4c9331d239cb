// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Frame.h"

#include <stdexcept>
#include <string_view>

// Says which line is no hexadecimal, and why.
struct BadHex : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The bytes of hexadecimal text as people have it: with blanks, line breaks, commas, colons and 0x, as tarvelctl -v
// prints it, or as a dump with offsets in front and characters behind (xxd, hexdump -C, od -t x1). Throws BadHex.
[[nodiscard]] Bytes parseHex(std::string_view text);
