// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/ArchiveCheck.h"

#include "hardening/ArchiveRule.h"
#include "util/LibUtils.h"
#include "util/Log.h"

#include <utility>

namespace
{

// An archive may name members without end: a megabyte of them is more than any firmware has.
constexpr std::size_t longestListing = 1 << 20;

constexpr std::uint64_t largestUnpacked = std::uint64_t{TARVELD_LARGEST_UNPACKED_MIB} << 20;

// The empty line behind a listing, which names no member, is there only if tar has come to its end: without it a tar,
// or a shell, that was killed would pass for an archive with fewer members.
std::string list(const char* option, const std::string& archive)
{
    std::string listing;
    const std::string length = std::to_string(longestListing + 1);
    static_cast<void>(LibUtils::executeCommandOutput(
        std::string("{ tar ") + option + " " + archive + " 2>/dev/null && echo; } | head -c " + length, listing));
    return listing;
}

bool takeEnd(std::string& listing)
{
    if (listing != "\n" && !listing.ends_with("\n\n")) {
        return false;
    }
    listing.pop_back();
    return true;
}

std::string objectionTo(std::string names, std::string details, std::vector<std::string>& files)
{
    if (names.size() > longestListing || details.size() > longestListing) {
        return "has too many members";
    }
    if (!takeEnd(names) || !takeEnd(details)) {
        return "cannot be listed";
    }
    return objectionToArchive(names, details, largestUnpacked, files);
}

} // namespace

int checkArchive(const std::string& archive, std::vector<std::string>& files)
{
    std::string names = list("-tzf", archive);
    std::string details = list("-tvzf", archive);
    const std::string objection = objectionTo(std::move(names), std::move(details), files);
    if (!objection.empty()) {
        logWarning("%s %s, it is not unpacked", archive.c_str(), objection.c_str());
        return -1;
    }
    return 0;
}
