// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Result.h"

#include <array>
#include <string>
#include <string_view>

// What every line starts with.
inline constexpr std::array<std::string_view, 7> outcomeColumns = {"target",  "ok",    "code", "category",
                                                                   "changed", "phase", "hint"};

// A result as lines of a table, one after another, because they may be many: a line per row of its list, or one if it
// has none. In each are the outcome, the result's own fields, the row.
void eachLine(const Result& result, const RowVisitor& visit);

// "yes" and "no", numbers with three places behind the point; empty for no value. As it is, for the caller to make
// printable.
[[nodiscard]] std::string textOf(const Cell& cell);
[[nodiscard]] Cell cellOf(const Row& line, std::string_view column); // empty if the line lacks it
