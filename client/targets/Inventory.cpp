// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/Inventory.h"

#include "client/model/Failure.h"
#include "client/wire/Endpoint.h"

#include <cstdlib>
#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <iterator>
#include <sstream>

namespace
{

Failure badLine(const std::string& fileName, int number, std::string_view why)
{
    return {ExitCode::badFile, Category::badFile, "reading the groups file",
            fmt::format("{}, line {}: {}", fileName, number, why)};
}

std::vector<std::string> wordsOf(const std::string& line)
{
    std::istringstream stream(line.substr(0, line.find('#')));
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string usersOwnFile()
{
    const char* configHome = std::getenv("XDG_CONFIG_HOME");
    if (configHome != nullptr && *configHome != '\0') {
        return std::string(configHome) + "/tarvelctl/groups";
    }
    const char* home = std::getenv("HOME");
    return home == nullptr ? std::string() : std::string(home) + "/.config/tarvelctl/groups";
}

} // namespace

Inventory Inventory::parse(std::string_view text, const std::string& fileName)
{
    Inventory inventory;
    std::istringstream stream{std::string(text)};
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        const std::vector<std::string> words = wordsOf(line);
        if (words.empty()) {
            continue;
        }
        if (words.front().front() == '@') {
            // Several lines may make one group.
            std::vector<std::string>& members = inventory.groups[words.front().substr(1)];
            members.insert(members.end(), words.begin() + 1, words.end());
        } else if (words.size() == 2 && parseEndpoint(words[1])) {
            // Of two addresses one is stale, and a change might go there.
            if (!inventory.addresses.emplace(words[0], words[1]).second) {
                throw usageFailure(fmt::format("{}, line {}: {} has an address already", fileName, number, words[0]));
            }
        } else {
            throw badLine(fileName, number, "expected a name and its address, or @group and its members");
        }
    }
    return inventory;
}

Inventory Inventory::load(const std::string& fileName)
{
    const std::string path = fileName.empty() ? usersOwnFile() : fileName;
    std::error_code ignored; // what cannot be looked at cannot be opened either
    // It would open like a file, and read like an empty one.
    if (std::filesystem::is_directory(path, ignored)) {
        throw usageFailure(fmt::format("{} is a directory, not a file of groups", path));
    }
    std::ifstream file(path);
    if (!file) {
        if (fileName.empty()) { // nobody needs a file; who names one means it
            return {};
        }
        throw Failure{ExitCode::badFile, Category::badFile, "reading the groups file",
                      fmt::format("cannot read {}", path)};
    }
    const std::string text(std::istreambuf_iterator<char>(file), {});
    return parse(text, path);
}

std::optional<std::string> Inventory::addressOf(const std::string& name) const
{
    const auto found = addresses.find(name);
    return found == addresses.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> Inventory::namesOf(const std::string& address) const
{
    std::vector<std::string> names;
    for (const auto& [name, cardAddress] : addresses) {
        if (cardAddress == address) {
            names.push_back(name);
        }
    }
    return names;
}

const std::vector<std::string>& Inventory::membersOf(const std::string& group) const
{
    const auto found = groups.find(group);
    if (found == groups.end()) {
        throw usageFailure(fmt::format("there is no group @{} in the groups file", group));
    }
    return found->second;
}
