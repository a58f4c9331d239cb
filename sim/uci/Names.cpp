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
    return !text.empty() && std::ranges::all_of(text, [](char c) { return isNameCharacter(c) || c == '-'; });
}

bool isTypeName(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, isVisible);
}

bool isSectionSelector(std::string_view text)
{
    return isName(text) || (text.starts_with('@') && text.ends_with(']') && isTypeName(text));
}
