// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "support/ProtocolPage.h"

#include <fstream>
#include <regex>
#include <stdexcept>

std::vector<DescribedCommand> describedCommands()
{
    static const std::regex row(R"(\| (\d+) \| ([^|:]+)(:[^|]*)? \| (TCP|UDP) \| (\w+) \|.*)");
    std::ifstream page(PROTOCOL_PAGE);
    std::vector<DescribedCommand> found;
    std::smatch cells;
    for (std::string line; std::getline(page, line);) {
        if (std::regex_match(line, cells, row)) {
            found.push_back({static_cast<std::uint16_t>(std::stoul(cells[1])), cells[2], cells[4], cells[5]});
        }
    }
    if (found.empty()) {
        throw std::runtime_error("no commands found in " PROTOCOL_PAGE);
    }
    return found;
}
