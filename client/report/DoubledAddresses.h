// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/FleetCard.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

// Addresses that two cards have, or two interfaces of one card, by what the cards say and where they answer from. Only
// cards that were asked by name count: a target that is an address may be a card that was named, too.
class DoubledAddresses
{
public:
    explicit DoubledAddresses(const std::vector<FleetCard>& cards);

    [[nodiscard]] std::size_t count() const { return holders.size(); }
    [[nodiscard]] bool isDoubled(const std::string& address) const { return holders.contains(address); }
    [[nodiscard]] bool hasDoubled(const FleetCard& card) const;
    // The other cards that have it; none if it is on two interfaces of this card.
    [[nodiscard]] std::vector<std::string> othersWith(const std::string& address, const std::string& card) const;

    // All that is known of a card's addresses, one for each interface that has it.
    [[nodiscard]] static std::multiset<std::string> of(const FleetCard& card);

private:
    std::map<std::string, std::set<std::string>> holders; // labels, of doubled addresses only
};
