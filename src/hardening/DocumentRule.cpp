// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/DocumentRule.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace
{

constexpr const char* foreignEncoding = "its encoding is not UTF-8";

// With what a document in UTF-16 (either order) and one in EBCDIC begin. One in 32 bits has a NUL among its first
// bytes.
constexpr std::array<std::string_view, 3> foreignStarts = {"\xFE\xFF", "\xFF\xFE", "\x4C\x6F\xA7\x94"};

void skipBlanks(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

bool beginsWithUtf8(std::string_view text)
{
    constexpr std::string_view name = "utf-8";
    const std::string_view start = text.substr(0, name.size());
    return std::ranges::equal(start, name, {}, [](unsigned char letter) { return std::tolower(letter); });
}

// The text starts behind the word "encoding": an equals sign and UTF-8 in quotes must follow.
bool namesUtf8(std::string_view text)
{
    skipBlanks(text);
    if (!text.starts_with('=')) {
        return false;
    }
    text.remove_prefix(1);
    skipBlanks(text);
    if (!text.starts_with('"') && !text.starts_with('\'')) {
        return false;
    }
    const char quote = text.front();
    text.remove_prefix(1);
    return beginsWithUtf8(text) && text.substr(5).starts_with(quote);
}

// Each "encoding" up to the end of the XML declaration; as far as there is none, that is the end of the document.
bool declaresForeignEncoding(std::string_view document)
{
    constexpr std::string_view word = "encoding";
    if (!document.starts_with("<?xml")) {
        return false;
    }
    std::string_view declaration = document.substr(0, document.find("?>"));
    for (std::size_t at = declaration.find(word); at != std::string_view::npos; at = declaration.find(word)) {
        declaration.remove_prefix(at + word.size());
        if (!namesUtf8(declaration)) {
            return true;
        }
    }
    return false;
}

} // namespace

const char* objectionTo(std::string_view document)
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    document = document.substr(0, document.find('\0'));
    if (std::ranges::any_of(foreignStarts, [&](std::string_view start) { return document.starts_with(start); })) {
        return foreignEncoding;
    }
    if (document.starts_with(byteOrderMark)) {
        document.remove_prefix(byteOrderMark.size());
    }
    if (declaresForeignEncoding(document)) {
        return foreignEncoding;
    }
    return document.find("<!DOCTYPE") != std::string_view::npos ? "it has a document type declaration" : nullptr;
}
