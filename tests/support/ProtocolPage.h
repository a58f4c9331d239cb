// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A row of the table of commands in docs/protocol.md, which people write: what the product's own tables are held
// against.
struct DescribedCommand {
    std::uint16_t number;
    std::string name;
    std::string transport; // "TCP" or "UDP"
    std::string effect;    // "reads" or "changes"
};

// All rows, in the page's order, which is that of the numbers.
[[nodiscard]] std::vector<DescribedCommand> describedCommands();
