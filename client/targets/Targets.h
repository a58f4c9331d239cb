// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Target.h"

#include <iosfwd>
#include <string>
#include <vector>

class Inventory;

// May an IPv4 network, such as 10.0.0.0/24, stand for its hosts?
enum class Networks { refused, expanded };

// The words of the command line as targets, in order, each once: names, addresses (with a port: of a forwarded
// connection), networks, ranges, @groups, and "-" for words from `input`. A name gets its address, and an address its
// name, from the inventory only. Throws a usage Failure for what cannot be a target.
[[nodiscard]] std::vector<Target> parseTargets(const std::vector<std::string>& words, const Inventory& inventory,
                                               std::istream& input, Networks networks = Networks::refused);

// The targets without those that the words name, as far as the inventory knows that they are the same. Throws a usage
// Failure for a word that takes none away, since somebody counts on it, and if none is left.
[[nodiscard]] std::vector<Target> withoutTargets(std::vector<Target> targets, const std::vector<std::string>& words,
                                                 const Inventory& inventory, std::istream& input);

// Throws a usage Failure for an address whose name is not known.
void requireNames(const std::vector<Target>& targets);
