// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/ArchiveRule.h"

#include "hardening/ArchiveListing.h"
#include "hardening/FirmwareSums.h"

namespace
{

std::string objectionToMember(MemberRules& rules, const ArchiveMember& member)
{
    // GNU tar tells a control character with one, so it cannot be told from a name that has it.
    if ((member.path + member.target).find('\\') != std::string::npos) {
        return "has a backslash or a control character in its name";
    }
    return rules.problemWith(member).value_or("");
}

} // namespace

std::string objectionToArchive(std::string_view names, std::string_view details, std::uint64_t most,
                               std::vector<std::string>& files)
{
    const auto members = readListing(names, details);
    if (!members) {
        return "has members that cannot be told apart";
    }
    MemberRules rules;
    std::uint64_t left = most;
    for (const ArchiveMember& member : *members) {
        if (const std::string objection = objectionToMember(rules, member); !objection.empty()) {
            return "has a member " + member.path + " that " + objection;
        }
        const auto size = static_cast<std::uint64_t>(member.size);
        if (size > left) {
            return "is too large: more than " + std::to_string(most) + " bytes";
        }
        left -= size;
        if (member.kind != MemberKind::directory) {
            files.push_back(withoutStart(member.path));
        }
    }
    return "";
}
