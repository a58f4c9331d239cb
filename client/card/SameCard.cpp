// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/SameCard.h"

#include "client/card/Ambiguity.h"
#include "client/card/Identity.h"

#include <algorithm>
#include <fmt/ranges.h>

namespace
{

bool isHeard(const Identified& card)
{
    return !card.heardFrom.empty();
}

// Does the card, heard by its name, have the address that the other target is?
bool has(const Identified& card, const Identified& other)
{
    const std::optional<Endpoint>& endpoint = other.target.endpoint;
    // At a forwarded port the address is that of whoever forwards, for many cards perhaps.
    return isHeard(card) && !isHeard(other) && endpoint && endpoint->port == cardPort &&
           (contains(card.heardFrom, endpoint->address) || contains(card.stated, endpoint->address));
}

std::vector<Endpoint> endpointsOf(const Identified& card, Way way)
{
    std::vector<Endpoint> endpoints;
    for (const std::string& address : card.heardFrom) {
        if (address != noAddress) {
            endpoints.push_back({address});
        }
    }
    if (way == Way::overTcp && !isHeard(card) && !card.refusal && card.target.endpoint) {
        endpoints.push_back(*card.target.endpoint);
    }
    return endpoints;
}

std::string namesOf(const std::set<Sender>& senders)
{
    std::vector<std::string> names;
    names.reserve(senders.size());
    for (const auto& [address, interface] : senders) {
        names.push_back(fmt::format("{} on {}", address, interface));
    }
    return fmt::format("{}", fmt::join(names, " and "));
}

// Where an address that is given answered the probe.
std::string placeOf(const Identified& card)
{
    return isName(card) || !card.target.endpoint ? "" : card.target.endpoint->interface;
}

} // namespace

bool isName(const Identified& card)
{
    return isHeard(card) || !card.target.isAddress();
}

bool isOneCard(const Identified& one, const Identified& other)
{
    if (one.refusal || other.refusal) {
        return false;
    }
    if (isName(one) && isName(other)) {
        return one.target.name == other.target.name;
    }
    return has(one, other) || has(other, one) || (one.target.endpoint && one.target.endpoint == other.target.endpoint);
}

std::optional<Endpoint> sharedEndpoint(const Identified& one, const Identified& other, Way way)
{
    const std::vector<Endpoint> theirs = endpointsOf(other, way);
    for (const Endpoint& endpoint : endpointsOf(one, way)) {
        if (std::ranges::find(theirs, endpoint) != theirs.end()) {
            return endpoint;
        }
    }
    return std::nullopt;
}

std::set<Sender> sendersOf(const std::vector<Identified>& cards, const Identified& card)
{
    std::set<Sender> senders = card.heardAt;
    for (const Identified& other : cards) {
        if (isOneCard(card, other)) {
            senders.insert(other.heardAt.begin(), other.heardAt.end());
        }
    }
    return senders;
}

void disbelieve(std::vector<Identified>& cards, const Census& census)
{
    for (Identified& card : cards) {
        std::erase_if(card.stated, [&](const std::string& address) {
            return std::ranges::any_of(census.hearersOf(address), [&](const std::string& interface) {
                return !card.heardAt.contains({address, interface});
            });
        });
    }
}

std::optional<std::string> changeSince(const Identified& before, const Identified& now)
{
    const auto wasKnown = [&](const Sender& sender) {
        return before.heardAt.contains(sender) || contains(before.stated, sender.first);
    };
    if (isHeard(before) && isHeard(now) && std::ranges::none_of(now.heardAt, wasKnown)) {
        return fmt::format("another card may have this name now: it answered from {} before, and from {} now",
                           namesOf(before.heardAt), namesOf(now.heardAt));
    }
    if (before.target.heard && now.target.heard && !saysTheSame(*before.target.heard, *now.target.heard)) {
        return "another card may have this name now, or somebody has changed it: it tells other settings than before";
    }
    const std::string then = placeOf(before);
    const std::string here = placeOf(now);
    if (!then.empty() && !here.empty() && then != here) {
        return fmt::format("another card may have this address now: it answered on {} before, and on {} now", then,
                           here);
    }
    return std::nullopt;
}

void markTwice(std::vector<Identified>& cards)
{
    for (Identified& card : cards) {
        card.sameAs.reset();
    }
    forEachPair(cards, [&](std::size_t earlier, std::size_t later) {
        if (!cards[later].sameAs && isOneCard(cards[earlier], cards[later])) {
            cards[later].sameAs = cards[earlier].sameAs.value_or(earlier);
        }
    });
}
