// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/DoubledAddresses.h"
#include "client/report/FleetCard.h"
#include "client/report/OddVersions.h"

#include <cstddef>
#include <string>
#include <vector>

// All cards of a report, and what is seen only by comparing them.
class Fleet
{
public:
    explicit Fleet(std::vector<FleetCard> newCards);

    [[nodiscard]] const std::vector<FleetCard>& cards() const { return all; }
    [[nodiscard]] const OddVersions& versions() const { return odd; }
    [[nodiscard]] const DoubledAddresses& addresses() const { return doubled; }

    // What is worth a look, as the filter of the page knows it: "failed", "odd", "doubled", "off".
    [[nodiscard]] std::vector<std::string> marksOf(const FleetCard& card) const;
    [[nodiscard]] std::size_t countWith(const std::string& mark) const;

private:
    std::vector<FleetCard> all;
    OddVersions odd;
    DoubledAddresses doubled;
};
