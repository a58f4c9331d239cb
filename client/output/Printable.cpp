// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Printable.h"

#include <fmt/core.h>

std::string printable(std::string_view text)
{
    std::string result;
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (code < 0x20 || code == 0x7F) {
            result += fmt::format("\\x{:02x}", code);
        } else {
            result += letter;
        }
    }
    return result;
}
