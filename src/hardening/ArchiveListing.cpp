// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/ArchiveListing.h"

#include <charconv>
#include <string>
#include <utility>

namespace
{

constexpr std::string_view digits = "0123456789";
constexpr std::string_view symlinkMark = " -> "; // busybox's for hard links, too
constexpr std::string_view hardlinkMark = " link to ";

std::optional<std::string_view> nextLine(std::string_view& text)
{
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

bool isOctal(char letter)
{
    return letter >= '0' && letter <= '7';
}

// GNU tar writes a byte beyond ASCII as a backslash and three octal digits. Any other backslash stays: it stands for a
// control character there, and for itself with busybox.
std::string withoutEscapes(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view code = text.substr(at, 4);
        const bool isByte = code.size() == 4 && code[0] == '\\' && (code[1] == '2' || code[1] == '3') &&
                            isOctal(code[2]) && isOctal(code[3]);
        if (isByte) {
            plain += static_cast<char>((code[1] - '0') * 64 + (code[2] - '0') * 8 + (code[3] - '0'));
            at += 3;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

// Takes the last word away and returns it.
std::string_view takeLastWord(std::string_view& text)
{
    const std::size_t start = text.find_last_of(' ') + 1; // 0 if there is no blank
    const std::string_view word = text.substr(start);
    text = text.substr(0, start == 0 ? 0 : start - 1);
    return word;
}

// Is it `pattern`, in which a 0 stands for any digit?
bool looksLike(std::string_view text, std::string_view pattern)
{
    if (text.size() != pattern.size()) {
        return false;
    }
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool fits =
            pattern[at] == '0' ? digits.find(text[at]) != std::string_view::npos : text[at] == pattern[at];
        if (!fits) {
            return false;
        }
    }
    return true;
}

// The size that a line's front ends with, in front of day and time; nothing if it does not end so. A device has two
// numbers there.
std::optional<std::int64_t> sizeIn(std::string_view front)
{
    const std::string_view time = takeLastWord(front);
    const std::string_view day = takeLastWord(front);
    const std::string_view size = takeLastWord(front);
    if (!(looksLike(time, "00:00") || looksLike(time, "00:00:00")) || !looksLike(day, "0000-00-00") || size.empty() ||
        size.find_first_not_of("0123456789,") != std::string_view::npos) {
        return std::nullopt;
    }
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(size.data(), size.data() + size.size(), number);
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

struct Reading {
    std::int64_t size;
    std::string_view mark;
    std::string_view target;
};

std::optional<Reading> readBehind(std::string_view front, std::string_view rest)
{
    const std::optional<std::int64_t> size = sizeIn(front);
    if (!size) {
        return std::nullopt;
    }
    if (rest.empty()) {
        return Reading{*size, {}, {}};
    }
    for (const std::string_view mark : {symlinkMark, hardlinkMark}) {
        if (rest.starts_with(mark)) {
            return Reading{*size, mark, rest.substr(mark.size())};
        }
    }
    return std::nullopt;
}

// The only way to read what stands around the name.
std::optional<Reading> readAround(std::string_view name, std::string_view details)
{
    std::optional<Reading> found;
    const std::string wanted = " " + std::string(name);
    for (std::size_t at = details.find(wanted); at != std::string_view::npos; at = details.find(wanted, at + 1)) {
        if (const auto reading = readBehind(details.substr(0, at), details.substr(at + wanted.size()))) {
            if (found) {
                return std::nullopt;
            }
            found = reading;
        }
    }
    return found;
}

MemberKind kindOf(char letter, std::string_view mark)
{
    switch (letter) {
    case '-':
        return mark.empty() ? MemberKind::file : MemberKind::hardlink;
    case 'd':
        return MemberKind::directory;
    case 'l':
        return MemberKind::symlink;
    case 'h':
        return MemberKind::hardlink;
    default:
        return MemberKind::special;
    }
}

bool setsId(std::string_view mode)
{
    constexpr std::size_t user = 3;
    constexpr std::size_t group = 6;
    const auto isSet = [mode](std::size_t at) { return mode[at] == 's' || mode[at] == 'S'; };
    return isSet(user) || isSet(group);
}

std::optional<ArchiveMember> readMember(std::string_view name, std::string_view details)
{
    constexpr std::string_view mode = "-rwxrwxrwx";
    const std::optional<Reading> reading = readAround(name, details);
    if (!reading || details.substr(0, details.find(' ')).size() != mode.size()) {
        return std::nullopt;
    }
    return ArchiveMember{withoutEscapes(name), kindOf(details[0], reading->mark), reading->size,
                         withoutEscapes(reading->target), setsId(details)};
}

} // namespace

std::optional<std::vector<ArchiveMember>> readListing(std::string_view names, std::string_view details)
{
    std::vector<ArchiveMember> members;
    while (!names.empty() || !details.empty()) {
        const std::optional<std::string_view> name = nextLine(names);
        const std::optional<std::string_view> line = nextLine(details);
        std::optional<ArchiveMember> member = name && line ? readMember(*name, *line) : std::nullopt;
        if (!member) {
            return std::nullopt;
        }
        members.push_back(std::move(*member));
    }
    return members;
}
