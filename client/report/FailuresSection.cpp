// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/model/Result.h"
#include "client/report/Sections.h"
#include "client/report/Table.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

struct Told {
    const Failure* failure;
    std::string sentence; // as it is true of all of them
    std::vector<std::size_t> cards;
};

std::string sentenceAbout(const FleetCard& card, const Failure& failure, std::string_view name)
{
    Result result;
    result.target = card.label;
    result.fail(failure);
    return result.hintAbout(name);
}

std::vector<Told> allTold(const Fleet& fleet)
{
    std::vector<Told> all;
    for (std::size_t index = 0; index < fleet.cards().size(); ++index) {
        const FleetCard& card = fleet.cards()[index];
        for (const Failure& failure : card.failures) {
            const std::string sentence = sentenceAbout(card, failure, anyName);
            const auto known = std::find_if(all.begin(), all.end(), [&](const Told& one) {
                return fleet.cards()[one.cards.front()].answered() == card.answered() && one.sentence == sentence &&
                       one.failure->category == failure.category && one.failure->phase == failure.phase;
            });
            if (known == all.end()) {
                all.push_back({&failure, sentence, {index}});
            } else {
                known->cards.push_back(index);
            }
        }
    }
    return all;
}

Html cardsOf(const Fleet& fleet, const Told& told)
{
    Html list;
    for (const std::size_t index : told.cards) {
        const FleetCard& card = fleet.cards()[index];
        const Html seen = card.lastSeen.empty() ? Html() : element("small", Html(fmt::format(" ({})", card.lastSeen)));
        list += element("li", {{"data-card", std::to_string(index)}, {"data-marks", "failed"}},
                        element("bdi", Html(card.label)) + seen);
    }
    return element("ul", {{"class", "cards"}}, list);
}

Html entryOf(const Fleet& fleet, const Told& told)
{
    const std::string what = fmt::format("{} while {}", wordOf(told.failure->category), told.failure->phase);
    const FleetCard& first = fleet.cards()[told.cards.front()];
    const std::string number = counted(told.cards.size(), "card") + (first.answered() ? ", known but for this:" : ":");
    // Of one card the sentence may as well have its name.
    const std::string sentence =
        told.cards.size() == 1 ? sentenceAbout(first, *told.failure, first.label) : told.sentence;
    return element("li", element("h3", Html(what)) + element("p", Html(sentence)) +
                             element("p", {{"class", "count"}}, Html(number)) + cardsOf(fleet, told));
}

Html doubtsOf(const Fleet& fleet)
{
    Html list;
    for (const std::string& doubt : fleet.doubts()) {
        list += element("li", element("bdi", Html(doubt)));
    }
    return element("li", element("h3", Html("Two cards with one name")) + element("ul", list));
}

} // namespace

Html failuresSection(const Fleet& fleet)
{
    const std::vector<Told> all = allTold(fleet);
    if (all.empty() && fleet.doubts().empty()) {
        return section("failures", "Failures", element("p", Html("All cards answered all that they were asked.")));
    }
    Html entries;
    for (const Told& told : all) {
        entries += entryOf(fleet, told);
    }
    if (!fleet.doubts().empty()) {
        entries += doubtsOf(fleet);
    }
    const Html note = element("p", {{"class", "note"}}, Html("Each reason once; NAME stands for any of its cards."));
    return section("failures", "Failures", note + element("ul", {{"class", "reasons"}}, entries));
}
