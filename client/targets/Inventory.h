// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the user wrote down about the cards, in $XDG_CONFIG_HOME/tarvelctl/groups or ~/.config/tarvelctl/groups:
//
//     # a name and its address
//     card01   10.0.0.11
//     # a group: names, addresses, ranges, other groups
//     @rack1   card[01-16] 10.0.0.40
//
class Inventory
{
public:
    Inventory() = default;
    // Throws a Failure that names the line: usage for a name that stands twice, else badFile.
    static Inventory parse(std::string_view text, const std::string& fileName);
    // The named file, or, if that is empty, the user's own, which need not exist.
    static Inventory load(const std::string& fileName);

    // What stands in a line of its own; nothing if there is none.
    [[nodiscard]] std::optional<std::string> addressOf(const std::string& name) const;
    [[nodiscard]] std::vector<std::string> namesOf(const std::string& address) const; // in alphabetical order
    // The words after "@group" as they were written; throws a usage Failure for an unknown group.
    [[nodiscard]] const std::vector<std::string>& membersOf(const std::string& group) const;

private:
    std::map<std::string, std::string> addresses;
    std::map<std::string, std::vector<std::string>> groups; // by name without @
};
