// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "hardening/LinkTree.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

enum class MemberKind { file, directory, symlink, hardlink, special };

struct ArchiveMember {
    std::string path; // as it stands in the archive
    MemberKind kind = MemberKind::file;
    std::int64_t size = 0; // bytes, of a file
    std::string target;    // of a link
    bool setsId = false;   // runs, or makes files, as its owner or group
};

// What an archive must not hold. The card unpacks as root, in the daemon's working directory, and asks nothing: a
// member must not leave that directory by any way, must be no device, and must not have a name that something else
// there depends on, or that people or programs there would take for something else.
class MemberRules
{
public:
    // Why the member must not be on a card, as the rest of a sentence that begins with its path; nothing if it may.
    // Members are told in the order of the archive, because a link changes what later paths mean.
    [[nodiscard]] std::optional<std::string> problemWith(const ArchiveMember& member);

    // As LinkTree::looks.
    [[nodiscard]] std::uint64_t looks() const { return links.looks(); }

private:
    LinkTree links;
};
