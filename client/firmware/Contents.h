// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/MemberList.h"
#include "client/firmware/PlaceTable.h"
#include "client/firmware/Sha256.h"
#include "hardening/MemberRules.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What will lie in the directory where an archive is unpacked: the digests of its files, and the texts of those that
// have to be read. Members are told in the order of the archive, because a later one takes the place of an earlier one.
class Contents
{
public:
    // The most that is kept of a text; of a longer one nothing is.
    static constexpr std::size_t longestText = std::size_t{4} << 20;

    explicit Contents(const std::vector<std::string>& pathsOfTexts);

    // A member, then what it holds; between the pieces may be holes, as in a sparse file.
    void begin(const ArchiveMember& member);
    void add(std::uint64_t offset, std::span<const std::byte> piece);
    void end();

    // With the paths of all members but the directories, without "./" in front.
    void forEachFile(const std::function<void(const std::string&)>& visit) const;

    // In hexadecimal, of the file that a path leads to, behind links, too; nothing if it leads to none.
    [[nodiscard]] std::optional<std::string> digestOf(std::string_view path) const;

    // What is in a file whose text is kept; nothing if it is none, or a longer one.
    [[nodiscard]] const std::optional<std::string>& textOf(const std::string& path) const;

private:
    using Nothing = PlaceTable::Nothing;
    using Directory = PlaceTable::Directory;
    using Link = PlaceTable::Link;
    using Entry = PlaceTable::Entry;

    void fill(std::uint64_t offset);
    void take(std::span<const std::byte> piece);
    void beginHardLink(const std::string& target);
    void makeWay();
    [[nodiscard]] Entry entryAt(const std::string& where) const;

    std::map<std::string, std::optional<std::string>> texts;
    MemberList paths;
    PlaceTable tree; // by their places, with single slashes
    // The member that is being read:
    std::string place;
    MemberKind kind = MemberKind::directory;
    std::uint64_t size = 0;
    std::uint64_t taken = 0;
    Sha256 digest;
    Entry entry;
    std::optional<std::string> text;
};
