// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/MemberRules.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace
{

// The names in a path, without empty ones and ".".
std::vector<std::string_view> namesIn(std::string_view path)
{
    std::vector<std::string_view> names;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (!name.empty() && name != ".") {
            names.push_back(name);
        }
    }
    return names;
}

std::string normalised(std::string_view path)
{
    std::string result;
    for (const std::string_view name : namesIn(path)) {
        result += result.empty() ? "" : "/";
        result += name;
    }
    return result;
}

bool isAbsolute(std::string_view path)
{
    return path.starts_with('/');
}

bool hasParentStep(std::string_view path)
{
    const std::vector<std::string_view> names = namesIn(path);
    return std::find(names.begin(), names.end(), "..") != names.end();
}

// A symbolic link may climb only at its start and only as far as its own directory lies below the top: behind
// another name, ".." could start anywhere.
bool staysInside(std::string_view linkPath, std::string_view target)
{
    const std::size_t depth = namesIn(linkPath).size() - 1;
    const std::vector<std::string_view> names = namesIn(target);
    const auto firstName = std::find_if(names.begin(), names.end(), [](auto name) { return name != ".."; });
    const auto steps = static_cast<std::size_t>(firstName - names.begin());
    return !isAbsolute(target) && steps <= depth && std::find(firstName, names.end(), "..") == names.end();
}

std::optional<std::string> problemWithPlace(std::string_view path)
{
    if (isAbsolute(path)) {
        return "has an absolute path";
    }
    if (hasParentStep(path)) {
        return "climbs out of the directory with \"..\"";
    }
    const std::vector<std::string_view> names = namesIn(path);
    if (names.empty()) {
        return std::nullopt; // the directory itself
    }
    if (names.front() == "firmware.tar.gz") {
        return "would overwrite the archive while the card unpacks it";
    }
    if (names.front() == "system.@system0.hostname") {
        return "is what the card's shell would make of its host name's settings key, so that the daemon could not "
               "start again";
    }
    return std::nullopt;
}

std::optional<std::string> problemWithKind(const ArchiveMember& member)
{
    switch (member.kind) {
    case MemberKind::special:
        return "is a device, a pipe or a socket";
    case MemberKind::symlink:
        if (namesIn(member.path).empty() || !staysInside(member.path, member.target)) {
            return "is a link that leaves the directory: " + member.target;
        }
        return std::nullopt;
    case MemberKind::hardlink:
        if (isAbsolute(member.target) || hasParentStep(member.target)) {
            return "is a hard link that leaves the directory: " + member.target;
        }
        return std::nullopt;
    case MemberKind::file:
    case MemberKind::directory:
        return std::nullopt;
    }
    return std::nullopt;
}

} // namespace

bool MemberRules::passesThroughLink(const std::string& path) const
{
    return std::any_of(links.begin(), links.end(),
                       [&](const std::string& link) { return path.starts_with(link + "/") || path == link; });
}

std::optional<std::string> MemberRules::problemWith(const ArchiveMember& member)
{
    if (std::optional<std::string> problem = problemWithPlace(member.path)) {
        return problem;
    }
    const std::string path = normalised(member.path);
    if (passesThroughLink(path)) {
        return "passes through a link of the same archive";
    }
    if (member.kind == MemberKind::hardlink && passesThroughLink(normalised(member.target))) {
        return "is a hard link through a link of the same archive";
    }
    std::optional<std::string> problem = problemWithKind(member);
    if (!problem && member.kind == MemberKind::symlink) {
        links.insert(path);
    }
    return problem;
}
