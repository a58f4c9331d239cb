// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Sections.h"
#include "client/report/Table.h"

#include <algorithm>
#include <iterator>

namespace
{

constexpr std::string_view lacking = "none";

Html cellOf(const OddVersions& versions, const std::string& id, const FleetCard& card)
{
    const std::optional<std::string> version = OddVersions::versionAt(card, id);
    const Html text = version ? Html(*version) : Html();
    if (!versions.isOdd(id, version)) {
        return element("td", text);
    }
    return element("td", {{"class", "odd"}}, marked("\u2260", "differs", version ? text : Html(lacking)));
}

Html usualRow(const OddVersions& versions)
{
    Html row = element("th", {{"scope", "row"}}, Html("Most have"));
    for (const std::string& id : versions.components()) {
        const OddVersions::Usual& usual = versions.usual(id);
        const std::string version = usual.version.value_or(std::string(lacking));
        row += element("td", Html(usual.exists ? version : "no majority"));
    }
    return element("tr", {{"class", "usual"}}, row);
}

Html captionOf(const Fleet& fleet)
{
    const std::size_t odd = fleet.countWith("odd");
    if (odd == 0) {
        return Html("No card differs from the others.");
    }
    return Html("Marked \u2260 and bold: other than what most cards have, on " + counted(odd, "card") + ".");
}

} // namespace

Html versionsSection(const Fleet& fleet)
{
    const OddVersions& versions = fleet.versions();
    std::vector<std::string> headings = {"Card"};
    std::ranges::copy(versions.components(), std::back_inserter(headings));
    Table table("versions", captionOf(fleet), headings);
    table.addToHead(usualRow(versions));
    bool isEmpty = true;
    for (std::size_t index = 0; index < fleet.cards().size(); ++index) {
        const FleetCard& card = fleet.cards()[index];
        if (!card.components) {
            continue;
        }
        isEmpty = false;
        Html cells;
        for (const std::string& id : versions.components()) {
            cells += cellOf(versions, id, card);
        }
        table.add(fleet, index, cells);
    }
    return section("versions", "Versions", isEmpty ? element("p", Html("No card told its versions.")) : table.html());
}
