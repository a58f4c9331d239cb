// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/PrintableText.h"

namespace
{

bool isControl(char letter)
{
    const auto code = static_cast<unsigned char>(letter);
    return code < 0x20 || code == 0x7F;
}

bool beginsWithLateControl(std::string_view text)
{
    const auto second = static_cast<unsigned char>(text.substr(0, 2).back());
    return text.starts_with('\xC2') && second >= 0x80 && second < 0xA0;
}

} // namespace

std::string printable(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const std::size_t length = beginsWithLateControl(text) ? 2 : 1;
        const bool hidden = length == 2 || isControl(text.front());
        result += hidden ? '?' : text.front();
        text.remove_prefix(length);
    }
    return result;
}
