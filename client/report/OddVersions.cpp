// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/OddVersions.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace
{

using Version = std::optional<std::string>;

OddVersions::Usual mostFrequent(const std::map<Version, std::size_t>& counts)
{
    const auto byCount = [](const auto& one, const auto& other) { return one.second < other.second; };
    const auto most = std::max_element(counts.begin(), counts.end(), byCount);
    const auto asMany =
        std::count_if(counts.begin(), counts.end(), [&](const auto& one) { return one.second == most->second; });
    return asMany == 1 ? OddVersions::Usual{true, most->first} : OddVersions::Usual{};
}

} // namespace

OddVersions::OddVersions(const std::vector<FleetCard>& cards)
{
    std::set<std::string> known;
    for (const FleetCard& card : cards) {
        for (const Component& component : card.components.value_or(std::vector<Component>())) {
            if (known.insert(component.id).second) {
                ids.push_back(component.id);
            }
        }
    }
    for (const std::string& id : ids) {
        std::map<Version, std::size_t> counts;
        for (const FleetCard& card : cards) {
            if (card.components) {
                ++counts[versionAt(card, id)];
            }
        }
        usualOf[id] = mostFrequent(counts);
    }
}

bool OddVersions::isOdd(const std::string& id, const Version& version) const
{
    return usualOf.at(id) != Usual{true, version};
}

bool OddVersions::isOdd(const FleetCard& card) const
{
    return card.components &&
           std::any_of(ids.begin(), ids.end(), [&](const std::string& id) { return isOdd(id, versionAt(card, id)); });
}

Version OddVersions::versionAt(const FleetCard& card, const std::string& id)
{
    Version version;
    for (const Component& component : *card.components) {
        if (component.id == id) {
            version = version ? *version + " / " + component.version : component.version;
        }
    }
    return version;
}
