// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/ArchiveCheck.h"

#include "hardening/ArchiveRule.h"
#include "util/LibUtils.h"
#include "util/Log.h"

namespace
{

// An archive may name members without end: a megabyte of them is more than any firmware has.
constexpr std::size_t longestListing = 1 << 20;

constexpr std::uint64_t largestUnpacked = std::uint64_t{TARVELD_LARGEST_UNPACKED_MIB} << 20;

// An empty line behind it, which names no member, is the sign of a tar that failed.
std::string list(const char* option, const std::string& archive)
{
    std::string listing;
    const std::string length = std::to_string(longestListing + 1);
    static_cast<void>(LibUtils::executeCommandOutput(
        std::string("{ tar ") + option + " " + archive + " 2>/dev/null || echo; } | head -c " + length, listing));
    return listing;
}

} // namespace

int checkArchive(const std::string& archive, std::vector<std::string>& files)
{
    const std::string names = list("-tzf", archive);
    const std::string details = list("-tvzf", archive);
    std::string objection = "has too many members";
    if (names.size() <= longestListing && details.size() <= longestListing) {
        objection = objectionToArchive(names, details, largestUnpacked, files);
    }
    if (!objection.empty()) {
        logWarning("%s %s, it is not unpacked", archive.c_str(), objection.c_str());
        return -1;
    }
    return 0;
}
