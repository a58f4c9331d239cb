// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Result.h"
#include "client/output/Columns.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Prints results on stdout in one of the formats, the same on a terminal and in a pipe. A failed target without data is
// no line of a table: its line for people goes to the Console.
class Writer
{
public:
    virtual ~Writer() = default;

    // The columns are those of the command, whatever comes; if they have widths, a table appears row by row. Throws a
    // usage Failure if the user chose others than there are.
    virtual void begin(std::string_view command, std::vector<Column> columns) = 0;
    // Between begin() and end(), in the order in which they are to be printed.
    virtual void add(const Result& result) = 0;
    // With the exit code of the run; prints what add() has not.
    virtual void end(ExitCode code) = 0;

    // True if a result is printed as soon as it is added, so that it should be added as soon as it is known.
    [[nodiscard]] virtual bool streams() const = 0;
};

inline constexpr int outputSchema = 2; // stands in all JSON; raised when a field changes its meaning

// The words for the formats.
inline constexpr std::string_view defaultFormat = "table";
[[nodiscard]] const std::vector<std::string>& formats();
[[nodiscard]] bool isFormat(const std::string& word);

// Columns, if any are named, are those of a table or of CSV. Throws a usage Failure if the format has none.
[[nodiscard]] std::unique_ptr<Writer> makeWriter(std::string_view format, std::vector<std::string> columns = {});
[[nodiscard]] std::unique_ptr<Writer> makeTableWriter(std::vector<std::string> columns = {});
[[nodiscard]] std::unique_ptr<Writer> makeCsvWriter(std::vector<std::string> columns = {});
[[nodiscard]] std::unique_ptr<Writer> makeJsonWriter();
[[nodiscard]] std::unique_ptr<Writer> makeJsonLinesWriter();
