// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Contents.h"

#include "hardening/FirmwareSums.h"

#include <algorithm>
#include <array>
#include <deque>

namespace
{

using Names = std::deque<std::string>;

void putBefore(Names& names, std::string_view path)
{
    while (!path.empty()) {
        const std::size_t slash = path.rfind('/');
        names.emplace_front(path.substr(slash == std::string_view::npos ? 0 : slash + 1));
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
    }
}

bool staysThere(const std::string& name)
{
    return name.empty() || name == ".";
}

std::string below(const std::string& directory, const std::string& name)
{
    return directory.empty() ? name : directory + "/" + name;
}

std::string parentOf(const std::string& place)
{
    const std::size_t slash = place.rfind('/');
    return slash == std::string::npos ? "" : place.substr(0, slash);
}

std::string placeOf(std::string_view path)
{
    Names names;
    putBefore(names, path);
    std::string place;
    for (const std::string& name : names) {
        place = staysThere(name) ? place : below(place, name);
    }
    return place;
}

} // namespace

void Contents::begin(const ArchiveMember& member)
{
    place = placeOf(member.path);
    kind = member.kind;
    size = static_cast<std::uint64_t>(std::max<std::int64_t>(member.size, 0));
    taken = 0;
    digest = Sha256();
    file = File();
    if (kind == MemberKind::symlink) {
        file.link = member.target;
    } else if (kind == MemberKind::hardlink) {
        const auto first = tree.find(placeOf(member.target));
        file = first == tree.end() || first->second.isDirectory ? File() : first->second;
    } else if (kind == MemberKind::file) {
        file.hasText = size <= longestText && std::find(texts.begin(), texts.end(), place) != texts.end();
    }
    if (kind != MemberKind::directory) {
        paths.push_back(withoutStart(member.path));
    }
}

void Contents::add(std::uint64_t offset, std::span<const std::byte> piece)
{
    if (kind == MemberKind::file && offset >= taken) {
        fill(offset);
        take(piece);
    }
}

void Contents::end()
{
    if (kind == MemberKind::file) {
        fill(size);
        file.digest = digest.finish();
    }
    if (kind == MemberKind::directory) {
        file.isDirectory = true;
        tree.try_emplace(place, std::move(file));
    } else {
        tree[place] = std::move(file);
    }
}

void Contents::fill(std::uint64_t offset)
{
    static constexpr std::array<std::byte, 65536> zeros = {};
    while (taken < std::min(offset, size)) {
        take(std::span(zeros).first(static_cast<std::size_t>(std::min<std::uint64_t>(offset - taken, zeros.size()))));
    }
}

void Contents::take(std::span<const std::byte> piece)
{
    piece = piece.first(static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), size - taken)));
    digest.add(piece);
    taken += piece.size();
    if (file.hasText) {
        file.text.append(reinterpret_cast<const char*>(piece.data()), piece.size());
    }
}

std::optional<std::string> Contents::digestOf(std::string_view path) const
{
    constexpr int mostLinks = 40; // as the kernel
    if (path.starts_with('/')) {
        return std::nullopt;
    }
    Names ahead;
    putBefore(ahead, path);
    std::string here;
    for (int links = 0; !ahead.empty() && links <= mostLinks;) {
        const std::string name = ahead.front();
        ahead.pop_front();
        if (staysThere(name)) {
            continue;
        }
        if (name == "..") {
            if (here.empty()) {
                return std::nullopt; // what lies around the directory is not known
            }
            here = parentOf(here);
            continue;
        }
        const std::string next = below(here, name);
        const auto found = tree.find(next);
        if (found == tree.end() ? hasFilesBelow(next) : found->second.isDirectory) {
            here = next;
        } else if (found != tree.end() && !found->second.link.empty()) {
            ++links;
            putBefore(ahead, found->second.link);
        } else {
            const bool isFile = found != tree.end() && ahead.empty() && !found->second.digest.empty();
            return isFile ? std::optional(found->second.digest) : std::nullopt;
        }
    }
    return std::nullopt;
}

// To unpack a member makes the directories that lead to it.
bool Contents::hasFilesBelow(const std::string& directory) const
{
    const std::string start = directory + "/";
    const auto first = tree.lower_bound(start);
    return first != tree.end() && first->first.starts_with(start);
}

std::optional<std::string> Contents::textOf(const std::string& path) const
{
    const auto found = tree.find(path);
    return found != tree.end() && found->second.hasText ? std::optional(found->second.text) : std::nullopt;
}
