// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/DoubledAddresses.h"

#include <algorithm>

namespace
{

// Of a card without an address.
constexpr std::string_view none = "0.0.0.0";

} // namespace

std::multiset<std::string> DoubledAddresses::of(const FleetCard& card)
{
    std::multiset<std::string> addresses;
    if (!card.settings) {
        return addresses;
    }
    for (const InterfaceConfig& interface : card.settings->interfaces) {
        for (std::string& address : addressesOf(interface)) {
            addresses.insert(std::move(address));
        }
    }
    // An interface that asks for its address does not say which it got.
    if (!card.heardFrom.empty() && !addresses.contains(card.heardFrom)) {
        addresses.insert(card.heardFrom);
    }
    addresses.erase(std::string(none));
    return addresses;
}

DoubledAddresses::DoubledAddresses(const std::vector<FleetCard>& cards)
{
    std::map<std::string, std::size_t> counts;
    for (const FleetCard& card : cards) {
        for (const std::string& address : of(card)) {
            ++counts[address];
            holders[address].insert(card.label);
        }
    }
    std::erase_if(holders, [&](const auto& holder) { return counts[holder.first] < 2; });
}

bool DoubledAddresses::hasDoubled(const FleetCard& card) const
{
    const std::multiset<std::string> addresses = of(card);
    return std::any_of(addresses.begin(), addresses.end(),
                       [&](const std::string& address) { return isDoubled(address); });
}

std::vector<std::string> DoubledAddresses::othersWith(const std::string& address, const std::string& card) const
{
    std::vector<std::string> others;
    if (const auto found = holders.find(address); found != holders.end()) {
        std::copy_if(found->second.begin(), found->second.end(), std::back_inserter(others),
                     [&](const std::string& label) { return label != card; });
    }
    return others;
}
