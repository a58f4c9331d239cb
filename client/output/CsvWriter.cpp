// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Lines.h"
#include "client/output/Printable.h"
#include "client/output/Streams.h"
#include "client/output/Writer.h"

#include <algorithm>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <iterator>

namespace
{

std::string quoted(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string result = "\"";
    for (const char letter : text) {
        result += letter == '"' ? "\"\"" : std::string(1, letter);
    }
    return result + '"';
}

// A spreadsheet would run such a text as a formula; behind an apostrophe it shows it.
bool isFormula(const std::string& text)
{
    return !text.empty() && std::string_view("=@+-").find(text.front()) != std::string_view::npos;
}

std::string csvText(const Cell& cell)
{
    const std::string text = printable(textOf(cell));
    // Only of texts: a number may begin with a minus.
    return quoted(std::holds_alternative<std::string>(cell) && isFormula(text) ? "'" + text : text);
}

class CsvWriter final : public Writer
{
public:
    explicit CsvWriter(std::vector<std::string> newChosen) : chosen(std::move(newChosen)) {}

    void begin(std::string_view /*command*/, std::vector<Column> own) override
    {
        columns = chosen.empty() ? allColumns({"target", "ok", "code", "category", "changed"}, own)
                                 : chooseColumns(chosen, own);
        if (chosen.empty()) {
            // Who chose columns gets them all the same.
            std::erase_if(columns, [](const Column& column) { return column.shown == Shown::nowhere; });
        }
        std::vector<std::string> names;
        std::transform(columns.begin(), columns.end(), std::back_inserter(names),
                       [](const Column& column) { return column.name; });
        writeData(fmt::format("{}\n", fmt::join(names, ",")));
    }

    void add(const Result& result) override
    {
        eachLine(result, [&](const Row& line) {
            std::vector<std::string> cells;
            std::transform(columns.begin(), columns.end(), std::back_inserter(cells),
                           [&](const Column& column) { return csvText(cellOf(line, column.name)); });
            writeData(fmt::format("{}\n", fmt::join(cells, ",")));
        });
    }

    void end(ExitCode /*code*/) override {}

    // On purpose: the lines are in the order of the targets.
    [[nodiscard]] bool streams() const override { return false; }

private:
    std::vector<std::string> chosen;
    std::vector<Column> columns;
};

} // namespace

std::unique_ptr<Writer> makeCsvWriter(std::vector<std::string> columns)
{
    return std::make_unique<CsvWriter>(std::move(columns));
}
