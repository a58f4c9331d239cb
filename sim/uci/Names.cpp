// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Names.h"

#include <algorithm>

namespace
{

bool isNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isVisible(char c)
{
    return c > ' ' && c <= '~';
}

} // namespace

bool isName(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, isNameCharacter);
}

bool isConfigName(std::string_view text)
{
    return isTypeName(text) && text.find_first_of("./=") == std::string_view::npos;
}

bool isTypeName(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, isVisible);
}

bool isText(std::string_view text)
{
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    return std::ranges::all_of(text, [&](char c) { return !isControl(c) || c == '\t' || c == '\n' || c == '\r'; });
}
