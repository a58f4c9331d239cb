// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Result.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A column of a table that is printed row by row, before all of its rows are known.
struct Column {
    std::string name;
    std::size_t width;
};

// Prints results on stdout in one of the formats, the same on a terminal and in a pipe. A failed target is data in
// the JSON formats only; its line for people goes to the Console.
class Writer
{
public:
    virtual ~Writer() = default;

    // Columns are given by a command that finds its targets one by one; its table then appears as they are added.
    virtual void begin(std::string_view command, std::vector<Column> columns = {}) = 0;
    virtual void add(const Result& result) = 0;
    virtual void end(ExitCode code) = 0;

    // True if a result is printed as soon as it is added, so that it should be added as soon as it is known.
    [[nodiscard]] virtual bool streams() const = 0;
};

inline constexpr int outputSchema = 1; // stands in all JSON; raised when a field changes its meaning

[[nodiscard]] std::unique_ptr<Writer> makeWriter(std::string_view format);
[[nodiscard]] std::unique_ptr<Writer> makeTableWriter();
[[nodiscard]] std::unique_ptr<Writer> makeCsvWriter();
[[nodiscard]] std::unique_ptr<Writer> makeJsonWriter();
[[nodiscard]] std::unique_ptr<Writer> makeJsonLinesWriter();
