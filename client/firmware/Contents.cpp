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

// Nothing if that is around the directory where the archive is unpacked: what lies there is not known.
std::optional<std::string> placeFrom(const std::string& here, const std::string& name)
{
    if (staysThere(name)) {
        return here;
    }
    if (name == "..") {
        return here.empty() ? std::nullopt : std::optional(parentOf(here));
    }
    return below(here, name);
}

} // namespace

Contents::Contents(const std::vector<std::string>& pathsOfTexts)
{
    for (const std::string& path : pathsOfTexts) {
        texts.try_emplace(path);
    }
}

void Contents::begin(const ArchiveMember& member)
{
    place = placeOf(member.path);
    kind = member.kind;
    size = static_cast<std::uint64_t>(std::max<std::int64_t>(member.size, 0));
    taken = 0;
    digest = Sha256();
    entry = Nothing();
    text.reset();
    if (kind == MemberKind::symlink) {
        entry = Link{member.target};
    } else if (kind == MemberKind::hardlink) {
        beginHardLink(placeOf(member.target));
    } else if (kind == MemberKind::file && size <= longestText && texts.contains(place)) {
        text = "";
    }
    if (kind != MemberKind::directory) {
        // Directories have no sum, and nobody has to list them.
        paths.add({withoutStart(member.path), kind, 0, "", false});
    }
}

void Contents::beginHardLink(const std::string& target)
{
    // One to a member that comes later is one to nothing, as when it is unpacked.
    const std::optional<Entry> first = tree.at(target);
    if (first && !std::holds_alternative<Directory>(*first)) {
        entry = *first;
        text = textOf(target);
    }
}

void Contents::add(std::uint64_t offset, std::span<const std::byte> piece)
{
    if (kind == MemberKind::file && offset >= taken) {
        fill(offset);
        take(piece);
    }
}

// To unpack a member makes the directories that lead to it.
void Contents::makeWay()
{
    for (std::string way = parentOf(place); !way.empty() && !tree.at(way); way = parentOf(way)) {
        tree.put(way, Directory());
    }
}

void Contents::end()
{
    makeWay();
    if (kind == MemberKind::directory) {
        if (!tree.at(place)) {
            tree.put(place, Directory());
        }
        return;
    }
    if (kind == MemberKind::file) {
        fill(size);
        entry = digest.finish();
    }
    tree.put(place, entry);
    if (const auto wanted = texts.find(place); wanted != texts.end()) {
        wanted->second = std::move(text);
    }
}

void Contents::fill(std::uint64_t offset)
{
    // What an archive leaves out of a sparse file is zeros on the card, and so in its sum.
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
    if (text) {
        text->append(reinterpret_cast<const char*>(piece.data()), piece.size());
    }
}

void Contents::forEachFile(const std::function<void(const std::string&)>& visit) const
{
    paths.forEach([&](const ArchiveMember& member) { visit(member.path); });
}

std::optional<std::string> Contents::digestOf(std::string_view path) const
{
    constexpr int mostLinks = 40; // as the kernel: more is a circle
    // What lies outside of the directory is not the archive's.
    if (path.starts_with('/')) {
        return std::nullopt;
    }
    Names ahead;
    putBefore(ahead, path);
    std::string here;
    for (int links = 0; !ahead.empty() && links <= mostLinks;) {
        const std::optional<std::string> next = placeFrom(here, ahead.front());
        ahead.pop_front();
        if (!next) {
            return std::nullopt;
        }
        const Entry there = entryAt(*next);
        if (std::holds_alternative<Directory>(there)) {
            here = *next;
        } else if (const auto* link = std::get_if<Link>(&there)) {
            ++links;
            putBefore(ahead, link->target);
        } else {
            const auto* sum = std::get_if<Sha256Sum>(&there);
            return sum != nullptr && ahead.empty() ? std::optional(inHexadecimal(*sum)) : std::nullopt;
        }
    }
    return std::nullopt;
}

Contents::Entry Contents::entryAt(const std::string& where) const
{
    if (where.empty()) {
        return Directory(); // the one where the archive is unpacked
    }
    return tree.at(where).value_or(Nothing());
}

const std::optional<std::string>& Contents::textOf(const std::string& path) const
{
    static const std::optional<std::string> none;
    const auto found = texts.find(path);
    return found != texts.end() ? found->second : none;
}
