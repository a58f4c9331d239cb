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

} // namespace

std::vector<Row> linesOf(const Result& result)
{
    if (!result.ok() && result.fields.empty() && result.list.empty()) {
        return {};
    }
    Row common;
    if (!result.target.empty()) {
        common.push_back({"target", result.target});
    }
    common.insert(common.end(), result.fields.begin(), result.fields.end());
    if (result.list.empty()) {
        return result.fields.empty() && !result.listName.empty() ? std::vector<Row>() : std::vector<Row>{common};
    }
    std::vector<Row> lines;
    lines.reserve(result.list.size());
    for (const Row& row : result.list) {
        Row line = common;
        line.insert(line.end(), row.begin(), row.end());
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<std::string> columnsOf(const std::vector<Row>& lines)
{
    std::vector<std::string> columns;
    for (const Row& line : lines) {
        for (const Field& field : line) {
            if (std::find(columns.begin(), columns.end(), field.name) == columns.end()) {
                columns.push_back(field.name);
            }
        }
    }
    return columns;
}

std::string textOf(const Cell& cell)
{
    return std::visit(CellText{}, cell);
}

std::string textOf(const Row& line, const std::string& column)
{
    const auto found = std::find_if(line.begin(), line.end(), [&](const Field& field) { return field.name == column; });
    return found == line.end() ? std::string() : textOf(found->value);
}
