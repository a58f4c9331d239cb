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
    // The doubts are sentences about names that two cards may have.
    explicit Fleet(std::vector<FleetCard> newCards, std::vector<std::string> newDoubts = {});

    [[nodiscard]] const std::vector<FleetCard>& cards() const { return all; }
    [[nodiscard]] const std::vector<std::string>& doubts() const { return doubtsOfNames; }
    [[nodiscard]] const OddVersions& versions() const { return odd; }
    [[nodiscard]] const DoubledAddresses& addresses() const { return doubled; }

    // What is worth a look, as the filter of the page knows it: "failed", "odd", "doubled", "off".
    [[nodiscard]] std::vector<std::string> marksOf(const FleetCard& card) const;
    [[nodiscard]] std::size_t countWith(const std::string& mark) const;

private:
    std::vector<FleetCard> all;
    std::vector<std::string> doubtsOfNames;
    OddVersions odd;
    DoubledAddresses doubled;
};
