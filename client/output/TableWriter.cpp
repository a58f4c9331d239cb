// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Lines.h"
#include "client/output/Printable.h"
#include "client/output/Streams.h"
#include "client/output/Writer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fmt/core.h>
#include <iterator>

namespace
{

// Lines beyond this are read nowhere; on a terminal, in a pipe and in a log the same.
constexpr std::size_t widestLine = 160;

std::string heading(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return letter == '_' ? ' ' : static_cast<char>(std::toupper(letter)); });
    return name;
}

// Filled up by what measured the column.
std::string padded(const std::string& cell, std::size_t width)
{
    return cell + std::string(width - std::min(width, columnsOf(cell)), ' ');
}

void printLine(const std::vector<std::string>& cells, const std::vector<Column>& columns)
{
    std::string line;
    for (std::size_t index = 0; index < cells.size(); ++index) {
        line += padded(cells[index], columns[index].width) + "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    writeData(line + "\n");
}

std::string cellText(const Row& line, const Column& column)
{
    return printable(textOf(cellOf(line, column.name)));
}

std::vector<std::string> cellsOf(const Row& line, const std::vector<Column>& columns)
{
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (const Column& column : columns) {
        cells.push_back(cellText(line, column));
    }
    return cells;
}

void printHeading(const std::vector<Column>& columns)
{
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (const Column& column : columns) {
        cells.push_back(heading(column.name));
    }
    printLine(cells, columns);
}

std::size_t widthOf(const std::vector<Column>& columns)
{
    std::size_t width = 0;
    for (const Column& column : columns) {
        width += column.width + 2;
    }
    return width;
}

// One cell a line, behind its heading.
void printRecord(const Row& line, const std::vector<Column>& columns)
{
    std::size_t width = 0;
    for (const Column& column : columns) {
        width = std::max(width, column.name.size());
    }
    const std::vector<std::string> cells = cellsOf(line, columns);
    for (std::size_t index = 0; index < cells.size(); ++index) {
        if (!cells[index].empty()) {
            writeData(fmt::format("{:<{}}  {}\n", heading(columns[index].name), width, cells[index]));
        }
    }
}

void widen(std::vector<Column>& columns, const Row& line)
{
    for (Column& column : columns) {
        column.width = std::max(column.width, columnsOf(cellText(line, column)));
    }
}

std::vector<Column> withHeadings(std::vector<Column> columns)
{
    for (Column& column : columns) {
        column.width = std::max(column.width, column.name.size());
    }
    return columns;
}

bool isNamed(const std::vector<Column>& columns, const std::string& name)
{
    return std::any_of(columns.begin(), columns.end(), [&](const Column& column) { return column.name == name; });
}

// Without data, a line may have nothing but its target.
bool saysNothing(const Result& result, const Row& line, const std::vector<Column>& columns,
                 const std::vector<Column>& aside)
{
    const bool hasData = std::any_of(result.fields.begin(), result.fields.end(),
                                     [&](const Field& field) { return !isNamed(aside, field.name); });
    return !hasData && !result.hasList() && std::all_of(columns.begin(), columns.end(), [&](const Column& column) {
        return column.name == "target" || cellText(line, column).empty();
    });
}

class TableWriter final : public Writer
{
public:
    explicit TableWriter(std::vector<std::string> newChosen) : chosen(std::move(newChosen)) {}

    void begin(std::string_view /*command*/, std::vector<Column> own) override
    {
        // A row that is printed before the next is known cannot be as wide as that will want it.
        isRowByRow = std::any_of(own.begin(), own.end(), [](const Column& column) { return column.width > 0; });
        std::copy_if(own.begin(), own.end(), std::back_inserter(aside),
                     [](const Column& column) { return column.shown != Shown::always; });
        columns = chosen.empty() ? allColumns({"target"}, own) : chooseColumns(chosen, own);
        if (chosen.empty()) {
            std::erase_if(columns, [](const Column& column) { return column.shown != Shown::always; });
        }
        if (isRowByRow) {
            columns = withHeadings(std::move(columns));
            printHeading(columns);
        }
    }

    void add(const Result& result) override
    {
        if (!isRowByRow) {
            results.push_back(result);
            return;
        }
        eachPrinted(result, [&](const Row& line) {
            printLine(cellsOf(line, columns), columns);
            std::fflush(stdout);
        });
    }

    void end(ExitCode /*code*/) override
    {
        if (isRowByRow) {
            return;
        }
        dropTargetOfNone();
        // All lines are made twice, to be measured and to be printed: kept, they would take more room than the results.
        std::vector<Column> fitting = withHeadings(columns);
        bool isEmpty = true;
        eachPrinted([&](const Row& line) {
            widen(fitting, line);
            isEmpty = false;
        });
        // An empty table has its heading in any case: a reader of many runs looks for it.
        if (widthOf(fitting) > widestLine && !isEmpty) {
            printRecords(fitting);
        } else {
            printTable(fitting);
        }
    }

    [[nodiscard]] bool streams() const override { return isRowByRow; }

private:
    void eachPrinted(const Result& result, const RowVisitor& visit) const
    {
        eachLine(result, [&](const Row& line) {
            if (!saysNothing(result, line, columns, aside)) {
                visit(line);
            }
        });
    }

    void eachPrinted(const RowVisitor& visit) const
    {
        for (const Result& result : results) {
            eachPrinted(result, visit);
        }
    }

    void printTable(const std::vector<Column>& fitting) const
    {
        printHeading(fitting);
        eachPrinted([&](const Row& line) { printLine(cellsOf(line, fitting), fitting); });
    }

    void printRecords(const std::vector<Column>& fitting) const
    {
        bool isFirst = true;
        eachPrinted([&](const Row& line) {
            writeData(isFirst ? "" : "\n");
            printRecord(line, fitting);
            isFirst = false;
        });
    }

    // What is about no card needs no column for it.
    void dropTargetOfNone()
    {
        bool isEmpty = true;
        bool hasTarget = false;
        eachPrinted([&](const Row& line) {
            isEmpty = false;
            hasTarget = hasTarget || !cellText(line, {"target"}).empty();
        });
        if (chosen.empty() && !isEmpty && !hasTarget) {
            std::erase_if(columns, [](const Column& column) { return column.name == "target"; });
        }
    }

    std::vector<std::string> chosen;
    std::vector<Column> aside; // of the command's own, those that only --columns shows
    std::vector<Column> columns;
    std::vector<Result> results; // rather than their lines, which may be many
    bool isRowByRow = false;
};

} // namespace

std::unique_ptr<Writer> makeTableWriter(std::vector<std::string> columns)
{
    return std::make_unique<TableWriter>(std::move(columns));
}
