// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/Sha256.h"
#include "hardening/MemberRules.h"

#include <cstdint>
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

    explicit Contents(std::vector<std::string> pathsOfTexts) : texts(std::move(pathsOfTexts)) {}

    // A member, then what it holds; between the pieces may be holes, as in a sparse file.
    void begin(const ArchiveMember& member);
    void add(std::uint64_t offset, std::span<const std::byte> piece);
    void end();

    // The paths of all members but the directories, without "./" in front.
    [[nodiscard]] const std::vector<std::string>& files() const { return paths; }

    // Of the file that a path leads to, behind links, too; nothing if it leads to none.
    [[nodiscard]] std::optional<std::string> digestOf(std::string_view path) const;

    // What is in a file whose text is kept; nothing if it is none, or a longer one.
    [[nodiscard]] std::optional<std::string> textOf(const std::string& path) const;

private:
    struct File {
        std::string digest;
        std::string link; // instead: where it leads, if it is a symbolic link
        std::string text;
        bool hasText = false;
        bool isDirectory = false; // that is a member; the others are known by what is in them
    };

    void fill(std::uint64_t offset);
    void take(std::span<const std::byte> piece);
    [[nodiscard]] bool hasFilesBelow(const std::string& directory) const;

    std::vector<std::string> texts;
    std::vector<std::string> paths;
    std::map<std::string, File, std::less<>> tree; // by their places, with single slashes
    // The member that is being read:
    std::string place;
    MemberKind kind = MemberKind::directory;
    std::uint64_t size = 0;
    std::uint64_t taken = 0;
    Sha256 digest;
    File file;
};
