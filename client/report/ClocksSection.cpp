// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/ClockPlot.h"
#include "client/report/Sections.h"
#include "client/report/SkewScale.h"
#include "client/report/Table.h"

#include <fmt/core.h>

namespace
{

Html cellsOf(const FleetCard::Clock& clock)
{
    const Html skew = Html(skewText(clock.skew));
    return element(
               "td",
               {{"class", clock.isOff() ? "number odd" : "number"}, {"data-value", fmt::format("{:.3f}", clock.skew)}},
               clock.isOff() ? marked("\u26a0", "off", skew) : skew) +
           element("td", {{"class", "number"}, {"data-value", fmt::format("{:.3f}", clock.error)}},
                   Html(fmt::format("\u00b1 {:.1f} s", clock.error))) +
           element("td", Html(clock.source));
}

} // namespace

Html clocksSection(const Fleet& fleet)
{
    Table table("clocks",
                Html("Ahead (+) or behind (\u2212) of the machine that looked, give or take; marked \u26a0 if more "
                     "than a second off for sure."),
                {"Card", "Skew", "Give or take", "Set by"});
    std::vector<PlottedClock> plotted;
    for (std::size_t index = 0; index < fleet.cards().size(); ++index) {
        const FleetCard& card = fleet.cards()[index];
        if (card.clock) {
            plotted.push_back({card.label, card.clock->skew});
            table.add(fleet, index, cellsOf(*card.clock));
        }
    }
    return section("clocks", "Clocks",
                   plotted.empty() ? element("p", Html("No card told its time.")) : clockPlot(plotted) + table.html());
}
