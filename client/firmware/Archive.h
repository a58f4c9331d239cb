// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/MemberRules.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// A firmware archive that was looked through.
struct Archive {
    std::string path;
    std::uint64_t size = 0; // bytes of the file
    std::string sha256;     // of the file, in hexadecimal
    std::vector<ArchiveMember> members;
    std::vector<std::string> problems; // why no card should get it, one a sentence; empty if it is good
};

// Walks through a whole gzip-compressed tar archive. Throws a badFile Failure if it cannot be read or is no such
// archive; what it must not hold is told in `problems`.
[[nodiscard]] Archive inspectArchive(const std::string& path);

// The same, and throws a badFile Failure if there are problems.
[[nodiscard]] Archive requireGoodArchive(const std::string& path);

[[nodiscard]] std::string_view kindName(MemberKind kind);
