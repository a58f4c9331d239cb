// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/MemberRules.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace
{

// The names in a path, without empty ones and ".".
std::vector<std::string_view> namesIn(std::string_view path)
{
    std::vector<std::string_view> names;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (!name.empty() && name != ".") {
            names.push_back(name);
        }
    }
    return names;
}

bool isAbsolute(std::string_view path)
{
    return path.starts_with('/');
}

bool hasParentStep(std::string_view path)
{
    const std::vector<std::string_view> names = namesIn(path);
    return std::find(names.begin(), names.end(), "..") != names.end();
}

// A symbolic link may climb only at its start and only as far as its own directory lies below the top: behind
// another name, ".." could start anywhere.
bool staysInside(std::string_view linkPath, std::string_view target)
{
    const std::size_t depth = namesIn(linkPath).size() - 1;
    const std::vector<std::string_view> names = namesIn(target);
    const auto firstName = std::find_if(names.begin(), names.end(), [](auto name) { return name != ".."; });
    const auto steps = static_cast<std::size_t>(firstName - names.begin());
    return !isAbsolute(target) && steps <= depth && std::find(firstName, names.end(), "..") == names.end();
}

std::optional<std::string> problemWithPlace(std::string_view path)
{
    if (isAbsolute(path)) {
        return "has an absolute path";
    }
    if (hasParentStep(path)) {
        return "climbs out of the directory with \"..\"";
    }
    const std::vector<std::string_view> names = namesIn(path);
    if (names.empty()) {
        return std::nullopt; // the directory itself
    }
    if (names.front() == "firmware.tar.gz") {
        return "would overwrite the archive while the card unpacks it";
    }
    if (names.front() == "system.@system0.hostname") {
        return "is what the card's shell would make of its host name's settings key, so that the daemon could not "
               "start again";
    }
    return std::nullopt;
}

bool isControl(char letter)
{
    const auto code = static_cast<unsigned char>(letter);
    return code < 0x20 || code == 0x7F;
}

struct ByteRange {
    unsigned char first;
    unsigned char last;
};

bool isIn(ByteRange range, char letter)
{
    const auto code = static_cast<unsigned char>(letter);
    return code >= range.first && code <= range.last;
}

// How a character of several bytes in UTF-8 begins, and how many follow the second one.
struct Start {
    ByteRange lead;
    ByteRange second;
    std::size_t others;
};

constexpr ByteRange continuation{0x80, 0xBF};
constexpr std::array starts = {
    Start{{0xC2, 0xDF}, continuation, 0}, Start{{0xE0, 0xE0}, {0xA0, 0xBF}, 1}, Start{{0xE1, 0xEC}, continuation, 1},
    Start{{0xED, 0xED}, {0x80, 0x9F}, 1}, Start{{0xEE, 0xEF}, continuation, 1}, Start{{0xF0, 0xF0}, {0x90, 0xBF}, 2},
    Start{{0xF1, 0xF3}, continuation, 2}, Start{{0xF4, 0xF4}, {0x80, 0x8F}, 2},
};

// The bytes at the front of the text that are one character in UTF-8; a single one if they are none.
std::string_view characterOf(std::string_view text)
{
    const auto start = std::ranges::find_if(starts, [&](const Start& one) { return isIn(one.lead, text.front()); });
    if (start == starts.end() || text.size() < start->others + 2 || !isIn(start->second, text[1])) {
        return text.substr(0, 1);
    }
    const auto isMore = [](char letter) { return isIn(continuation, letter); };
    return text.substr(0, std::ranges::all_of(text.substr(2, start->others), isMore) ? start->others + 2 : 1);
}

// What some terminals obey: U+0080 to U+009F, or a single byte of that number.
bool hasLateControl(std::string_view text)
{
    constexpr ByteRange late{0x80, 0x9F};
    while (!text.empty()) {
        const std::string_view character = characterOf(text);
        const bool holdsCode = character.size() == 1 || character.starts_with('\xC2');
        if (holdsCode && isIn(late, character.back())) {
            return true;
        }
        text.remove_prefix(character.size());
    }
    return false;
}

bool hasControls(std::string_view text)
{
    return std::ranges::any_of(text, isControl) || hasLateControl(text);
}

std::optional<std::string> problemWithName(const ArchiveMember& member)
{
    if (hasControls(member.path) || hasControls(member.target)) {
        return "has control characters in its name";
    }
    const std::vector<std::string_view> names = namesIn(member.path);
    if (std::ranges::any_of(names, [](std::string_view name) { return name.starts_with('-'); })) {
        return "has a name that a program would take for an option";
    }
    if (member.setsId) {
        return "has the setuid or setgid bit";
    }
    return std::nullopt;
}

std::optional<std::string> problemWithKind(const ArchiveMember& member)
{
    switch (member.kind) {
    case MemberKind::special:
        return "is a device, a pipe or a socket";
    case MemberKind::symlink:
        if (namesIn(member.path).empty() || !staysInside(member.path, member.target)) {
            return "is a link that leaves the directory: " + member.target;
        }
        return std::nullopt;
    case MemberKind::hardlink:
        if (isAbsolute(member.target) || hasParentStep(member.target)) {
            return "is a hard link that leaves the directory: " + member.target;
        }
        return std::nullopt;
    case MemberKind::file:
    case MemberKind::directory:
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> MemberRules::problemWith(const ArchiveMember& member)
{
    if (std::optional<std::string> problem = problemWithPlace(member.path)) {
        return problem;
    }
    if (std::optional<std::string> problem = problemWithName(member)) {
        return problem;
    }
    const std::vector<std::string_view> place = namesIn(member.path);
    if (links.leadsThrough(place)) {
        return "passes through a link of the same archive";
    }
    if (member.kind == MemberKind::hardlink && links.leadsThrough(namesIn(member.target))) {
        return "is a hard link through a link of the same archive";
    }
    std::optional<std::string> problem = problemWithKind(member);
    if (!problem && member.kind == MemberKind::symlink) {
        links.insert(place);
    }
    return problem;
}
