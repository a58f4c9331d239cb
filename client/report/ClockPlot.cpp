// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/ClockPlot.h"

#include "client/report/SkewScale.h"
#include "client/report/Table.h"

#include <algorithm>
#include <cmath>
#include <fmt/core.h>
#include <map>

namespace
{

constexpr int columns = 100;    // places for dots across
constexpr double margin = 5;    // percent on each side, for the labels of the ends
constexpr double dotGap = 7;    // pixels between dots above each other, if there is room
constexpr double tallest = 160; // pixels for the dots
constexpr double axisRoom = 24; // pixels for the labels below
constexpr double radius = 3;

using Columns = std::map<int, std::vector<const PlottedClock*>>;

int columnOf(double position)
{
    return static_cast<int>(std::lround(position * columns));
}

std::string across(double position)
{
    return fmt::format("{:g}%", margin + position * (columns - 2 * margin));
}

std::string pixels(double number)
{
    return fmt::format("{:g}", std::round(number * 10) / 10);
}

Html line(const std::string& name, double position, double top, double bottom)
{
    return element("line",
                   {{"class", name},
                    {"x1", across(position)},
                    {"x2", across(position)},
                    {"y1", pixels(top)},
                    {"y2", pixels(bottom)}},
                   Html());
}

Html axisOf(const SkewScale& scale, double height)
{
    const std::string base = pixels(height);
    Html axis;
    for (const SkewScale::Tick& tick : scale.ticks()) {
        const double position = scale.position(tick.skew);
        axis += line(tick.skew == 0 ? "right" : "tick", position, tick.skew == 0 ? 0 : height - 4, height + 4);
        axis +=
            element("text", {{"x", across(position)}, {"y", pixels(height + axisRoom - 6)}, {"text-anchor", "middle"}},
                    Html(tick.label));
    }
    return axis + element("line", {{"class", "axis"}, {"x1", "0"}, {"x2", "100%"}, {"y1", base}, {"y2", base}}, Html());
}

Html dotsOf(const Columns& places, double height, double gap)
{
    Html dots;
    for (const auto& [column, clocks] : places) {
        double y = height - radius - 3;
        for (const PlottedClock* clock : clocks) {
            const Html name = element("title", Html(clock->label + ": " + skewText(clock->skew)));
            dots += element(
                "circle",
                {{"cx", across(static_cast<double>(column) / columns)}, {"cy", pixels(y)}, {"r", pixels(radius)}},
                name);
            y -= gap;
        }
    }
    return dots;
}

std::string inWords(const std::vector<PlottedClock>& clocks)
{
    const auto [least, most] =
        std::minmax_element(clocks.begin(), clocks.end(),
                            [](const PlottedClock& one, const PlottedClock& other) { return one.skew < other.skew; });
    const auto close = std::count_if(clocks.begin(), clocks.end(),
                                     [](const PlottedClock& clock) { return std::abs(clock.skew) <= 1; });
    return fmt::format("From {} ({}) to {} ({}); {} of {} within a second.", skewText(least->skew), least->label,
                       skewText(most->skew), most->label, close, clocks.size());
}

} // namespace

Html clockPlot(const std::vector<PlottedClock>& clocks)
{
    double largest = 0;
    for (const PlottedClock& clock : clocks) {
        largest = std::max(largest, std::abs(clock.skew));
    }
    const SkewScale scale(largest);
    Columns places;
    std::size_t most = 1;
    for (const PlottedClock& clock : clocks) {
        std::vector<const PlottedClock*>& place = places[columnOf(scale.position(clock.skew))];
        place.push_back(&clock);
        most = std::max(most, place.size());
    }
    const double gap = std::min(dotGap, tallest / static_cast<double>(most));
    const double height = std::max(40.0, gap * static_cast<double>(most) + 3 * radius);
    const std::string words = inWords(clocks);
    const Html picture =
        element("svg",
                {{"role", "img"},
                 {"aria-labelledby", "plot-title plot-text"},
                 {"width", "100%"},
                 {"height", pixels(height + axisRoom)}},
                element("title", {{"id", "plot-title"}}, Html("Clock skew of " + counted(clocks.size(), "card"))) +
                    element("desc", {{"id", "plot-text"}}, Html(words)) + axisOf(scale, height) +
                    element("g", {{"class", "dots"}}, dotsOf(places, height, gap)));
    return element(
        "figure", picture + element("figcaption",
                                    Html(words + " Each dot is a card; even to one second, in powers of ten beyond.")));
}
