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

std::string printableLines(std::string_view text)
{
    std::string result;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        result += printable(text.substr(0, end)) + '\n';
        text.remove_prefix(end + 1);
    }
    return result + printable(text);
}
