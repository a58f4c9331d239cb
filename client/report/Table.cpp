// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Table.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

Table::Table(std::string_view newId, Html newCaption, const std::vector<std::string>& headings)
    : id(newId), caption(std::move(newCaption))
{
    Html names;
    for (const std::string& heading : headings) {
        names += element("th", {{"scope", "col"}}, Html(heading));
    }
    head = element("tr", names);
}

void Table::add(const Fleet& fleet, std::size_t index, const Html& cells)
{
    const FleetCard& card = fleet.cards()[index];
    const std::string marks = fmt::format("{}", fmt::join(fleet.marksOf(card), " "));
    body += element("tr", {{"data-card", std::to_string(index)}, {marks.empty() ? "" : "data-marks", marks}},
                    element("th", {{"scope", "row"}}, Html(card.label)) + cells);
    body += Html::verbatim("\n");
}

Html Table::html() const
{
    const std::string captionId = id + "-caption";
    const Html table = element("table", {{"id", id + "-table"}},
                               element("caption", {{"id", captionId}}, element("span", caption)) +
                                   element("thead", head) + element("tbody", body));
    return element("div", {{"class", "scroll"}, {"role", "region"}, {"aria-labelledby", captionId}, {"tabindex", "0"}},
                   table);
}

Html section(std::string_view id, std::string_view heading, const Html& content)
{
    const std::string headingId = fmt::format("{}-heading", id);
    return element("section", {{"id", std::string(id)}, {"aria-labelledby", headingId}},
                   element("h2", {{"id", headingId}}, Html(heading)) + content);
}

Html marked(std::string_view sign, std::string_view word, const Html& content)
{
    const Html spoken = element("span", {{"class", "spoken"}}, Html(fmt::format("{}: ", word)));
    const Html seen = element("span", {{"aria-hidden", "true"}}, Html(fmt::format("{} ", sign)));
    return element("strong", seen + spoken + content);
}

std::string counted(std::size_t number, std::string_view noun, std::string_view nouns)
{
    if (number != 1 && !nouns.empty()) {
        return fmt::format("{} {}", number, nouns);
    }
    return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
}
