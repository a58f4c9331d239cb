// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Columns.h"

#include "client/model/Failure.h"
#include "client/output/Lines.h"

#include <algorithm>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <iterator>
#include <sstream>

namespace
{

bool isIn(const std::vector<Column>& columns, std::string_view name)
{
    return std::any_of(columns.begin(), columns.end(), [&](const Column& one) { return one.name == name; });
}

std::vector<Column> offeredColumns(const std::vector<Column>& own)
{
    return allColumns({outcomeColumns.begin(), outcomeColumns.end()}, own);
}

Failure unknownColumn(const std::string& name, const std::vector<Column>& offered)
{
    std::vector<std::string_view> names;
    std::transform(offered.begin(), offered.end(), std::back_inserter(names),
                   [](const Column& one) { return std::string_view(one.name); });
    return usageFailure(fmt::format("there is no column \"{}\"; the columns are {}", name, fmt::join(names, ", ")));
}

} // namespace

std::vector<std::string> columnNames(std::string_view text)
{
    std::istringstream stream{std::string(text)};
    std::vector<std::string> names;
    for (std::string name; std::getline(stream, name, ',');) {
        names.push_back(name);
    }
    // An empty text names one column, which there is not, so that a slip is told.
    return names.empty() ? std::vector<std::string>{""} : names;
}

std::vector<Column> chooseColumns(const std::vector<std::string>& names, const std::vector<Column>& own)
{
    const std::vector<Column> offered = offeredColumns(own);
    std::vector<Column> chosen;
    for (const std::string& name : names) {
        const auto found =
            std::find_if(offered.begin(), offered.end(), [&](const Column& one) { return one.name == name; });
        if (found == offered.end()) {
            throw unknownColumn(name, offered);
        }
        chosen.push_back(*found);
    }
    return chosen;
}

std::vector<Column> allColumns(const std::vector<std::string>& common, const std::vector<Column>& own)
{
    std::vector<Column> columns;
    for (const std::string& name : common) {
        // A command that has a column of this name says where it stands, and how wide it is.
        if (!isIn(own, name)) {
            columns.emplace_back(name);
        }
    }
    columns.insert(columns.end(), own.begin(), own.end());
    return columns;
}
