// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/CardBook.h"

#include "client/model/Failure.h"
#include "client/wire/Endpoint.h"

#include <cstdlib>
#include <fmt/core.h>
#include <fstream>
#include <iterator>
#include <sstream>

namespace
{

Failure badLine(const std::string& fileName, int number, std::string_view why)
{
    return {ExitCode::badFile, "bad-file", "reading the groups file",
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

CardBook CardBook::parse(std::string_view text, const std::string& fileName)
{
    CardBook book;
    std::istringstream stream{std::string(text)};
    std::string line;
    for (int number = 1; std::getline(stream, line); ++number) {
        const std::vector<std::string> words = wordsOf(line);
        if (words.empty()) {
            continue;
        }
        if (words.front().front() == '@') {
            std::vector<std::string>& members = book.groups[words.front().substr(1)];
            members.insert(members.end(), words.begin() + 1, words.end());
        } else if (words.size() == 2 && parseEndpoint(words[1])) {
            book.addresses[words[0]] = words[1];
        } else {
            throw badLine(fileName, number, "expected a name and its address, or @group and its members");
        }
    }
    return book;
}

CardBook CardBook::load(const std::string& fileName)
{
    const std::string path = fileName.empty() ? usersOwnFile() : fileName;
    std::ifstream file(path);
    if (!file) {
        if (fileName.empty()) {
            return {};
        }
        throw Failure{ExitCode::badFile, "bad-file", "reading the groups file", fmt::format("cannot read {}", path)};
    }
    const std::string text(std::istreambuf_iterator<char>(file), {});
    return parse(text, path);
}

std::optional<std::string> CardBook::addressOf(const std::string& name) const
{
    const auto found = addresses.find(name);
    return found == addresses.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> CardBook::nameOf(const std::string& address) const
{
    for (const auto& [name, cardAddress] : addresses) {
        if (cardAddress == address) {
            return name;
        }
    }
    return std::nullopt;
}

const std::vector<std::string>& CardBook::membersOf(const std::string& group) const
{
    const auto found = groups.find(group);
    if (found == groups.end()) {
        throw usageFailure(fmt::format("there is no group @{} in the groups file", group));
    }
    return found->second;
}
