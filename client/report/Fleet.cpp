// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Fleet.h"

#include <algorithm>

Fleet::Fleet(std::vector<FleetCard> newCards, std::vector<std::string> newDoubts)
    : all(std::move(newCards)), doubtsOfNames(std::move(newDoubts)), odd(all), doubled(all)
{
}

std::vector<std::string> Fleet::marksOf(const FleetCard& card) const
{
    std::vector<std::string> marks;
    const auto add = [&](bool isSo, const char* mark) {
        if (isSo) {
            marks.emplace_back(mark);
        }
    };
    add(!card.failures.empty(), "failed");
    add(odd.isOdd(card), "odd");
    add(doubled.hasDoubled(card), "doubled");
    add(card.clock && card.clock->isOff(), "off");
    return marks;
}

std::size_t Fleet::countWith(const std::string& mark) const
{
    return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), [&](const FleetCard& card) {
        const std::vector<std::string> marks = marksOf(card);
        return std::find(marks.begin(), marks.end(), mark) != marks.end();
    }));
}
