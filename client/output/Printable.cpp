// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Printable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fmt/core.h>

namespace
{

struct CodeRange {
    std::uint32_t first;
    std::uint32_t last;
};

// What moves the cursor, ends a line, or changes the direction in which the rest of a line is read.
constexpr std::array unprintable = {
    CodeRange{0x00, 0x1F},     CodeRange{0x7F, 0x9F},     CodeRange{0x061C, 0x061C}, CodeRange{0x200E, 0x200F},
    CodeRange{0x2028, 0x202E}, CodeRange{0x2066, 0x2069}, CodeRange{0xFEFF, 0xFEFF},
};

// What takes two columns of a terminal: letters of East Asia, and pictures.
constexpr std::array wide = {
    CodeRange{0x1100, 0x115F},   CodeRange{0x2E80, 0x303E},   CodeRange{0x3041, 0xA4CF},   CodeRange{0xAC00, 0xD7A3},
    CodeRange{0xF900, 0xFAFF},   CodeRange{0xFE30, 0xFE6F},   CodeRange{0xFF00, 0xFF60},   CodeRange{0xFFE0, 0xFFE6},
    CodeRange{0x1F300, 0x1F64F}, CodeRange{0x1F900, 0x1F9FF}, CodeRange{0x20000, 0x3FFFD},
};

// UTF-8 with so many bytes holds the codes of this range only; others belong into fewer bytes, or are none.
constexpr std::array<CodeRange, 5> codesOfLength = {
    CodeRange{1, 0}, {0x00, 0x7F}, {0x80, 0x7FF}, {0x800, 0xFFFF}, {0x10000, 0x10FFFF}};

bool contains(CodeRange range, std::uint32_t code)
{
    return code >= range.first && code <= range.last;
}

std::size_t lengthToldBy(unsigned char lead)
{
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC0 && lead < 0xE0) {
        return 2;
    }
    if (lead >= 0xE0 && lead < 0xF0) {
        return 3;
    }
    return lead >= 0xF0 && lead < 0xF8 ? 4 : 0;
}

std::uint32_t codeOf(std::string_view bytes)
{
    const auto lead = static_cast<unsigned char>(bytes.front());
    std::uint32_t code = bytes.size() == 1 ? lead : lead & (0x7FU >> bytes.size());
    for (const char letter : bytes.substr(1)) {
        code = code << 6 | (static_cast<unsigned char>(letter) & 0x3FU);
    }
    return code;
}

bool continues(char letter)
{
    return (static_cast<unsigned char>(letter) & 0xC0U) == 0x80;
}

// The bytes of the character at the front of the text; none if they are no UTF-8.
std::string_view characterOf(std::string_view text)
{
    constexpr CodeRange surrogates{0xD800, 0xDFFF};
    const std::size_t length = lengthToldBy(static_cast<unsigned char>(text.front()));
    const std::string_view bytes = text.substr(0, length);
    if (length == 0 || bytes.size() < length || !std::all_of(bytes.begin() + 1, bytes.end(), continues)) {
        return {};
    }
    const std::uint32_t code = codeOf(bytes);
    return contains(codesOfLength.at(length), code) && !contains(surrogates, code) ? bytes : std::string_view();
}

template<typename Ranges>
bool isIn(const Ranges& ranges, std::string_view character)
{
    return std::ranges::any_of(ranges, [code = codeOf(character)](CodeRange range) { return contains(range, code); });
}

bool isPrintable(std::string_view character)
{
    return !character.empty() && !isIn(unprintable, character);
}

void removeLastCharacter(std::string& text)
{
    while (text.size() > 1 && continues(text.back())) {
        text.pop_back();
    }
    text.pop_back();
}

// Nearly always all of it: only what follows is looked at character by character.
std::string_view plainStartOf(std::string_view text)
{
    const auto isPlain = [](char letter) { return letter >= ' ' && letter <= '~'; };
    return {text.begin(), std::find_if_not(text.begin(), text.end(), isPlain)};
}

std::string inNumbers(std::string_view bytes)
{
    std::string result;
    for (const char letter : bytes) {
        result += fmt::format("\\x{:02x}", static_cast<unsigned char>(letter));
    }
    return result;
}

} // namespace

std::string printable(std::string_view text)
{
    std::string result(plainStartOf(text));
    text.remove_prefix(result.size());
    while (!text.empty()) {
        const std::string_view character = characterOf(text);
        const std::string_view taken = character.empty() ? text.substr(0, 1) : character; // behind it one may begin
        result += isPrintable(character) ? std::string(taken) : inNumbers(taken);
        text.remove_prefix(taken.size());
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

std::size_t columnsOf(std::string_view printed)
{
    std::size_t columns = plainStartOf(printed).size();
    printed.remove_prefix(columns);
    while (!printed.empty()) {
        const std::string_view character = characterOf(printed);
        columns += !character.empty() && isIn(wide, character) ? 2 : 1;
        printed.remove_prefix(std::max<std::size_t>(character.size(), 1));
    }
    return columns;
}

std::string cutTo(std::string printed, std::size_t columns)
{
    constexpr std::string_view dots = "...";
    if (columnsOf(printed) <= columns) {
        return printed;
    }
    while (!printed.empty() && columnsOf(printed) + dots.size() > columns) {
        removeLastCharacter(printed);
    }
    return printed + std::string(dots.substr(0, columns));
}
