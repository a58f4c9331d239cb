// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Discovery.h"
#include "client/model/Result.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What a search for cards has found, and whether that is enough.
struct Findings {
    std::vector<std::pair<std::string, std::string>> named; // interface and address of each name that answered
    std::vector<std::string> silent;                        // names that did not
    std::size_t unnamed = 0;                                // more addresses

    [[nodiscard]] bool isNamed(const FoundCard& card) const;

    // What is missing: somebody at all, or what was expected (0: nothing) of names, if any were asked for, or else of
    // addresses. The names that did not answer are listed in it.
    [[nodiscard]] std::optional<Result> shortfall(std::size_t expected, bool byNames) const;
};
