// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/plan/VersionsDiff.h"

#include "client/model/Failure.h"

#include <algorithm>
#include <fmt/core.h>
#include <sstream>

namespace
{

bool allAgreeOn(const std::string& id, const std::vector<std::vector<Component>>& cards)
{
    return std::all_of(cards.begin(), cards.end(), [&](const std::vector<Component>& card) {
        return versionOf(card, id) == versionOf(cards.front(), id);
    });
}

bool isListed(const std::vector<std::string>& ids, const std::string& id)
{
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

} // namespace

std::optional<std::string> versionOf(const std::vector<Component>& components, std::string_view id)
{
    const auto found =
        std::find_if(components.begin(), components.end(), [&](const Component& one) { return one.id == id; });
    return found == components.end() ? std::nullopt : std::optional(found->version);
}

std::vector<std::string> differingComponents(const std::vector<std::vector<Component>>& cards)
{
    std::vector<std::string> differing;
    for (const std::vector<Component>& card : cards) {
        for (const Component& component : card) {
            if (!isListed(differing, component.id) && !allAgreeOn(component.id, cards)) {
                differing.push_back(component.id);
            }
        }
    }
    return differing;
}

std::vector<Component> parseExpectedVersions(std::string_view text, const std::string& fileName)
{
    std::vector<Component> expected;
    std::istringstream lines{std::string(text)};
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        std::istringstream words(line.substr(0, line.find('#')));
        Component component;
        if (!(words >> component.id)) {
            continue;
        }
        // The rest of the line: a version may have blanks inside.
        std::getline(words >> std::ws, component.version);
        // A file from another system has a carriage return there.
        component.version.erase(component.version.find_last_not_of(" \t\r") + 1);
        if (component.version.empty()) {
            throw Failure{ExitCode::badFile, Category::badFile, "reading the expected versions",
                          fmt::format("{}, line {}: expected a component and its version", fileName, number)};
        }
        expected.push_back(std::move(component));
    }
    if (expected.empty()) {
        throw usageFailure(fmt::format("{} names no component: every card would be as expected", fileName));
    }
    return expected;
}

std::vector<Component> unmetExpectations(const std::vector<Component>& card, const std::vector<Component>& expected)
{
    std::vector<Component> unmet;
    std::copy_if(expected.begin(), expected.end(), std::back_inserter(unmet),
                 [&](const Component& one) { return versionOf(card, one.id) != one.version; });
    return unmet;
}
