// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Sections.h"
#include "client/report/SkewScale.h"
#include "client/report/Table.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace
{

struct Tile {
    std::string_view name;
    std::string value;
    bool isWorthALook;
    std::string_view place; // of the page
};

Html tileHtml(const Tile& tile)
{
    const Html value = Html(tile.value);
    const Html shown = tile.isWorthALook ? marked("\u26a0", "look", value) : value;
    return element("div", {{"class", tile.isWorthALook ? "tile look" : "tile"}},
                   element("dt", Html(tile.name)) +
                       element("dd", element("a", {{"href", "#" + std::string(tile.place)}}, shown)));
}

std::string largestSkew(const Fleet& fleet)
{
    double largest = 0;
    bool isKnown = false;
    for (const FleetCard& card : fleet.cards()) {
        if (card.clock) {
            isKnown = true;
            largest = std::abs(card.clock->skew) > std::abs(largest) ? card.clock->skew : largest;
        }
    }
    return isKnown ? skewText(largest) : "unknown";
}

} // namespace

Html summarySection(const Fleet& fleet)
{
    const std::vector<FleetCard>& cards = fleet.cards();
    const auto answered = static_cast<std::size_t>(
        std::count_if(cards.begin(), cards.end(), [](const FleetCard& card) { return card.answered(); }));
    const std::size_t silent = cards.size() - answered;
    const std::size_t odd = fleet.countWith("odd");
    const std::size_t doubled = fleet.addresses().count();
    const std::string told = std::to_string(answered) + " of " + std::to_string(cards.size());
    Html tiles;
    for (const Tile& tile : {Tile{"Cards that answered", told, false, "versions"},
                             Tile{"Without an answer", std::to_string(silent), silent > 0, "failures"},
                             Tile{"With other versions", std::to_string(odd), odd > 0, "versions"},
                             Tile{"Doubled addresses", std::to_string(doubled), doubled > 0, "addresses"},
                             Tile{"Largest clock skew", largestSkew(fleet), fleet.countWith("off") > 0, "clocks"}}) {
        tiles += tileHtml(tile);
    }
    return element("dl", {{"class", "tiles"}}, tiles);
}
