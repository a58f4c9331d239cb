// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Lines.h"
#include "client/output/Printable.h"
#include "client/output/Writer.h"

#include <fmt/core.h>

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

void printLine(const std::vector<std::string>& cells)
{
    const char* separator = "";
    for (const std::string& cell : cells) {
        fmt::print("{}{}", separator, quoted(cell));
        separator = ",";
    }
    fmt::print("\n");
}

// Lines differ in their columns only when the whole is known, so nothing is printed before the end.
class CsvWriter final : public Writer
{
public:
    void begin(std::string_view /*command*/, std::vector<Column> /*columns*/) override {}

    void add(const Result& result) override
    {
        for (Row& line : linesOf(result)) {
            lines.push_back(std::move(line));
        }
    }

    void end(ExitCode /*code*/) override
    {
        const std::vector<std::string> columns = columnsOf(lines);
        if (columns.empty()) {
            return;
        }
        printLine(columns);
        for (const Row& line : lines) {
            std::vector<std::string> cells;
            cells.reserve(columns.size());
            for (const std::string& column : columns) {
                cells.push_back(printable(textOf(line, column)));
            }
            printLine(cells);
        }
    }

    [[nodiscard]] bool streams() const override { return false; }

private:
    std::vector<Row> lines;
};

} // namespace

std::unique_ptr<Writer> makeCsvWriter()
{
    return std::make_unique<CsvWriter>();
}
