// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Endpoint.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

class CardBook;

// One card as the user named it.
struct Target {
    std::string label;                // what the user wrote; stands in all output
    std::string name;                 // empty if only an address is known
    std::optional<Endpoint> endpoint; // nothing if only a name is known
};

// The words of the command line as targets, in order, each once: names, addresses (with a port: of a forwarded
// connection), ranges, @groups, and "-" for words from `input`. A name gets its address, and an address its name,
// from the book only. Throws a usage Failure for what cannot be a target.
[[nodiscard]] std::vector<Target> parseTargets(const std::vector<std::string>& words, const CardBook& book,
                                               std::istream& input);
