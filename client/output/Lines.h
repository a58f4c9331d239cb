// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Result.h"

#include <string>
#include <vector>

// Results as lines of a table. Each result gives a line per row of its list (or one, if it has none), which starts
// with the target and the result's own fields. A result whose list is empty and that has
// no fields gives none, nor does a failed one without data.
[[nodiscard]] std::vector<Row> linesOf(const Result& result);

// The names of all columns in the order in which they first appear.
[[nodiscard]] std::vector<std::string> columnsOf(const std::vector<Row>& lines);

[[nodiscard]] std::string textOf(const Cell& cell);
[[nodiscard]] std::string textOf(const Row& line, const std::string& column); // empty if the line lacks it
