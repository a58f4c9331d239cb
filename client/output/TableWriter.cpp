// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Lines.h"
#include "client/output/Printable.h"
#include "client/output/Writer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fmt/core.h>

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

void printLine(const std::vector<std::string>& cells, const std::vector<Column>& columns)
{
    std::string line;
    for (std::size_t index = 0; index < cells.size(); ++index) {
        line += fmt::format("{:<{}}  ", cells[index], columns[index].width);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    fmt::print("{}\n", line);
}

std::vector<std::string> cellsOf(const Row& line, const std::vector<Column>& columns)
{
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (const Column& column : columns) {
        cells.push_back(printable(textOf(line, column.name)));
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
            fmt::print("{:<{}}  {}\n", heading(columns[index].name), width, cells[index]);
        }
    }
}

std::vector<Column> fittingColumns(const std::vector<Row>& lines)
{
    std::vector<Column> columns;
    for (const std::string& name : columnsOf(lines)) {
        Column column{name, name.size()};
        for (const Row& line : lines) {
            column.width = std::max(column.width, printable(textOf(line, name)).size());
        }
        columns.push_back(column);
    }
    return columns;
}

class TableWriter final : public Writer
{
public:
    void begin(std::string_view /*command*/, std::vector<Column> newColumns) override
    {
        columns = std::move(newColumns);
    }

    void add(const Result& result) override
    {
        for (Row& line : linesOf(result)) {
            if (streams()) {
                printStreamed(line);
            } else {
                lines.push_back(std::move(line));
            }
        }
    }

    void end(ExitCode /*code*/) override
    {
        if (lines.empty()) {
            return;
        }
        const std::vector<Column> fitting = fittingColumns(lines);
        if (widthOf(fitting) > widestLine) {
            printRecords(fitting);
        } else {
            printTable(fitting);
        }
    }

    [[nodiscard]] bool streams() const override { return !columns.empty(); }

private:
    void printTable(const std::vector<Column>& fitting) const
    {
        printHeading(fitting);
        for (const Row& line : lines) {
            printLine(cellsOf(line, fitting), fitting);
        }
    }

    void printRecords(const std::vector<Column>& fitting) const
    {
        for (const Row& line : lines) {
            if (&line != &lines.front()) {
                fmt::print("\n");
            }
            printRecord(line, fitting);
        }
    }

    void printStreamed(const Row& line)
    {
        if (!headingPrinted) {
            printHeading(columns);
            headingPrinted = true;
        }
        printLine(cellsOf(line, columns), columns);
        std::fflush(stdout);
    }

    std::vector<Column> columns; // of a table that is printed row by row
    std::vector<Row> lines;
    bool headingPrinted = false;
};

} // namespace

std::unique_ptr<Writer> makeTableWriter()
{
    return std::make_unique<TableWriter>();
}
