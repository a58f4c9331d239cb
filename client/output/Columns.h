// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Where a column is that the user did not choose.
enum class Shown { always, inCsvOnly, nowhere };

// A column of a table or of CSV.
struct Column {
    Column(std::string newName, std::size_t newWidth = 0) : name(std::move(newName)), width(newWidth) {}

    std::string name;
    std::size_t width; // of a table that is printed row by row, before all of its rows are known; else 0
    Shown shown = Shown::always;
};

// "ok,code" as its words.
[[nodiscard]] std::vector<std::string> columnNames(std::string_view text);

// The columns of that name, in that order: of the command's own and those that every result has. Throws a usage Failure
// that lists them for a name that is none.
[[nodiscard]] std::vector<Column> chooseColumns(const std::vector<std::string>& names, const std::vector<Column>& own);

// What every result has and a format shows of it if the user chose nothing, then the command's own.
[[nodiscard]] std::vector<Column> allColumns(const std::vector<std::string>& common, const std::vector<Column>& own);
