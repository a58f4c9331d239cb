// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Complaints.h"

#include <fmt/core.h>

namespace
{

constexpr std::size_t mostTold = 100; // chosen: an archive may be wrong in each of its members

} // namespace

void ForeignOwners::note(std::int64_t user, std::int64_t group, const std::string& path)
{
    if ((user != 0 || group != 0) && ++foreign == 1) {
        example = fmt::format("{} ({}:{})", path, user, group);
    }
}

void ForeignOwners::tell(std::vector<std::string>& warnings) const
{
    if (foreign != 0) {
        warnings.push_back(fmt::format("members that belong to others than root: {}, such as {}", foreign, example));
    }
}

void Problems::note(const std::string& path, const std::string& problem)
{
    if (++found <= mostTold) {
        told.push_back(fmt::format("{} {}", path, problem));
    }
}

void Problems::tell(std::vector<std::string>& problems) const
{
    problems.insert(problems.end(), told.begin(), told.end());
    if (found > mostTold) {
        problems.push_back(fmt::format("and {} more members that a card must not get", found - mostTold));
    }
}
