// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/model/Failure.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// One value as it is printed; an empty one is null in JSON and nothing in a table.
using Cell = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

struct Field {
    std::string name;
    Cell value;
    bool isOwn = false; // of this target alone: makes it no other answer

    bool operator==(const Field&) const = default;
};

using Row = std::vector<Field>;
using RowVisitor = std::function<void(const Row&)>;

// Stands for the names in what is said of several cards, as it does in the manual.
inline constexpr std::string_view anyName = "NAME";

// What one target gave: the outcome, fields about the target, and at most one list with a row each. In JSON the list
// is an array under its name; in a table and in CSV each row of the list is a line.
struct Result {
    std::string target;
    ExitCode code = ExitCode::ok;
    Category category = Category::none; // with ok
    std::string phase;
    std::string hint;                    // may also accompany a success
    std::optional<bool> changed = false; // is the card another one now? Nothing: nobody knows
    bool malformed = false;              // the card's answer was no XML and was read by its fixed form
    Row fields;
    std::string listName;
    std::vector<Row> list;
    std::function<void(const RowVisitor&)> longList; // instead of a list too long to keep: makes its rows, one by one

    [[nodiscard]] bool ok() const { return code == ExitCode::ok; }
    [[nodiscard]] bool hasList() const { return !list.empty() || longList; }
    void eachRow(const RowVisitor& visit) const; // of its list
    // The hint as it would be of a target with that name: what is true of several cards is told once.
    [[nodiscard]] std::string hintAbout(std::string_view name) const;
    void add(std::string name, Cell value) { fields.push_back({std::move(name), std::move(value)}); }
    // Takes over the outcome and leaves the data: what was learned before a failure is worth printing.
    void fail(Failure failure)
    {
        code = failure.code;
        category = failure.category;
        phase = std::move(failure.phase);
        hint = std::move(failure.hint);
    }
};

// 0 if all are well, the common code if all ended alike, else ExitCode::mixed.
[[nodiscard]] ExitCode commonCode(const std::vector<Result>& results);
