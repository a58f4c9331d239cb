// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Lines.h"

#include <algorithm>
#include <fmt/core.h>

namespace
{

struct CellText {
    std::string operator()(std::monostate /*none*/) const { return {}; }
    std::string operator()(bool value) const { return value ? "yes" : "no"; }
    std::string operator()(std::int64_t value) const { return fmt::format("{}", value); }
    std::string operator()(double value) const { return fmt::format("{:.3f}", value); }
    std::string operator()(const std::string& value) const { return value; }
};

Row outcomeOf(const Result& result)
{
    const std::array<Cell, outcomeColumns.size()> cells = {result.target,
                                                           result.ok(),
                                                           std::int64_t{static_cast<int>(result.code)},
                                                           std::string(wordOf(result.category)),
                                                           result.changed ? Cell(*result.changed) : Cell(),
                                                           result.phase,
                                                           result.hint};
    Row outcome;
    for (std::size_t index = 0; index < cells.size(); ++index) {
        outcome.push_back({std::string(outcomeColumns.at(index)), cells.at(index)});
    }
    return outcome;
}

} // namespace

void eachLine(const Result& result, const RowVisitor& visit)
{
    Row line = outcomeOf(result);
    line.insert(line.end(), result.fields.begin(), result.fields.end());
    const auto common = static_cast<Row::difference_type>(line.size());
    bool hasRows = false;
    result.eachRow([&](const Row& row) {
        // Only the end is made anew for each row: what all have in common may be long, and the rows many.
        line.erase(line.begin() + common, line.end());
        line.insert(line.end(), row.begin(), row.end());
        visit(line);
        hasRows = true;
    });
    if (!hasRows) {
        visit(line);
    }
}

std::string textOf(const Cell& cell)
{
    return std::visit(CellText{}, cell);
}

Cell cellOf(const Row& line, std::string_view column)
{
    const auto found = std::find_if(line.begin(), line.end(), [&](const Field& field) { return field.name == column; });
    return found == line.end() ? Cell() : found->value;
}
