// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/decode/HexInput.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fmt/core.h>
#include <optional>
#include <vector>

namespace
{

bool isBlank(char letter)
{
    return std::isspace(static_cast<unsigned char>(letter)) != 0;
}

bool isHex(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char letter) { return std::isxdigit(letter) != 0; });
}

bool hasPrefix(std::string_view word)
{
    return word.starts_with("0x") || word.starts_with("0X") || word.starts_with("\\x");
}

// "0010:" and "0x0010:" are offsets, "81:c3" and "81:" are bytes.
std::optional<std::size_t> endOfColonOffset(std::string_view line)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon + 1 == line.size() || !isBlank(line[colon + 1])) {
        return std::nullopt;
    }
    std::string_view word = line.substr(0, colon);
    word.remove_prefix(hasPrefix(word) ? 2 : 0);
    return word.size() >= 4 && isHex(word) ? std::optional(colon + 1) : std::nullopt;
}

std::string_view trimmed(std::string_view line)
{
    while (!line.empty() && isBlank(line.front())) {
        line.remove_prefix(1);
    }
    while (!line.empty() && isBlank(line.back())) {
        line.remove_suffix(1);
    }
    return line;
}

// Cuts the offset in front and the characters behind off a line of xxd; other lines lose only what follows a bar,
// which is where hexdump shows characters.
std::string_view withoutDecoration(std::string_view line)
{
    line = trimmed(line.substr(0, line.find('|')));
    const std::optional<std::size_t> offset = endOfColonOffset(line);
    if (!offset) {
        return line;
    }
    // Two blanks are where xxd ends the bytes; those within them are single.
    line = trimmed(line.substr(*offset));
    return line.substr(0, line.find("  "));
}

std::vector<std::string_view> wordsOf(std::string_view line)
{
    // All that people and programs put between bytes, be it source code or JSON.
    constexpr std::string_view separators = " \t\r\v\f,;:-{}()[]\"'";
    std::vector<std::string_view> words;
    for (std::size_t start = line.find_first_not_of(separators); start != std::string_view::npos;) {
        const std::size_t end = std::min(line.find_first_of(separators, start), line.size());
        words.push_back(line.substr(start, end - start));
        start = line.find_first_not_of(separators, end);
    }
    return words;
}

class HexReader
{
public:
    void readLine(std::string_view line)
    {
        ++lineNumber;
        std::vector<std::string_view> words = wordsOf(withoutDecoration(line));
        if (startsWithOffset(words)) {
            offsetsSeen = true;
            words.erase(words.begin());
        }
        for (const std::string_view word : words) {
            readWord(word);
        }
    }

    Bytes bytes;

private:
    // The dumps of hexdump and od have an offset of six to eight digits before bytes of two digits each, and end in
    // a line with nothing but an offset. Eight digits before other words of eight are bytes.
    [[nodiscard]] bool startsWithOffset(const std::vector<std::string_view>& words) const
    {
        if (words.empty() || words.front().size() < 6 || words.front().size() > 8 || !isHex(words.front())) {
            return false;
        }
        return words.size() == 1 ? offsetsSeen : std::all_of(words.begin() + 1, words.end(), [](std::string_view word) {
            return word.size() == 2;
        });
    }

    void readWord(std::string_view word)
    {
        const bool prefixed = hasPrefix(word);
        const std::string_view digits = word.substr(prefixed ? 2 : 0);
        if (digits.empty() || !isHex(digits)) {
            throw BadHex(fmt::format("line {}: \"{}\" is not hexadecimal", lineNumber, word));
        }
        // "0x7" is a byte as people write them; "817" has lost a digit, or belongs to the next word.
        if (digits.size() % 2 != 0 && !(prefixed && digits.size() == 1)) {
            throw BadHex(fmt::format("line {}: \"{}\" has an odd number of digits", lineNumber, word));
        }
        for (std::size_t at = 0; at < digits.size(); at += 2) {
            const std::string_view pair = digits.substr(at, 2);
            unsigned value = 0;
            std::from_chars(pair.data(), pair.data() + pair.size(), value, 16);
            bytes.push_back(static_cast<std::byte>(value));
        }
    }

    int lineNumber = 0;
    bool offsetsSeen = false;
};

} // namespace

Bytes parseHex(std::string_view text)
{
    HexReader reader;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        reader.readLine(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return std::move(reader.bytes);
}
