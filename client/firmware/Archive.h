// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/firmware/Contents.h"
#include "client/firmware/HeldFile.h"
#include "client/firmware/MemberList.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// A firmware archive that was looked through.
struct Archive {
    std::string path;           // for people: what is sent is read from `file`
    HeldFile file;              // as it was looked through
    std::uint64_t size = 0;     // bytes of the file
    std::string sha256;         // of the file, in hexadecimal
    std::uint64_t unpacked = 0; // bytes of all files in it
    MemberList members;
    std::uint64_t looks = 0;           // at earlier links, to judge the members: what grows with both
    std::vector<std::string> problems; // why no card should get it, one a sentence; empty if it is good. Of
                                       // very many the first, and how many more there are
    std::vector<std::string> warnings; // what may be meant so
};

inline constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;
inline constexpr std::uint64_t mostUnpacked = 1024 * mebibyte; // if the user says nothing else

// Called all the time while an archive is looked through, which may take long; ends that by throwing.
using Checkpoint = std::function<void()>;

// Walks through a whole gzip-compressed tar archive. Throws a badFile Failure if it cannot be read or is no such
// archive; what it must not hold is told in `problems`. Reads no further once it holds more than `maximum` bytes.
// `contents`, if given, is told what is in it.
[[nodiscard]] Archive inspectArchive(const std::string& path, const Checkpoint& checkpoint,
                                     std::uint64_t maximum = mostUnpacked, Contents* contents = nullptr);

// The same, and throws a badFile Failure if there are problems.
[[nodiscard]] Archive requireGoodArchive(const std::string& path, const Checkpoint& checkpoint,
                                         std::uint64_t maximum = mostUnpacked);

[[nodiscard]] std::string_view kindName(MemberKind kind);
