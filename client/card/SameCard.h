// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Identification.h"
#include "client/model/Contains.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

// How two targets compare, as far as is known of them.

// Is it known by its name, rather than by an address alone?
[[nodiscard]] bool isName(const Identified& card);

// Names that differ are never one card, nor is one to which nothing may be sent: it must be told why.
[[nodiscard]] bool isOneCard(const Identified& one, const Identified& other);

// Where both names lead. Cards without an address share none, and a noted address counts if it is believed and used.
[[nodiscard]] std::optional<Endpoint> sharedEndpoint(const Identified& one, const Identified& other, Way way);

// Where all targets that are this card were heard.
[[nodiscard]] std::set<Sender> sendersOf(const std::vector<Identified>& cards, const Identified& card);

// Who answers where a card's settings say that it is, and was not heard by its name there, is another card.
void disbelieve(std::vector<Identified>& cards, const Census& census);

// Why a target may be another card now than when it was identified before: nobody who answers now was known then, or
// the card says something else. Nothing if it is the same, or is silent now, which says nothing.
[[nodiscard]] std::optional<std::string> changeSince(const Identified& before, const Identified& now);

// Marks each target that is the same card as an earlier one, and no other.
void markTwice(std::vector<Identified>& cards);

// With the indices of the earlier and the later.
template<typename Look>
void forEachPair(const std::vector<Identified>& cards, const Look& look)
{
    for (std::size_t later = 1; later < cards.size(); ++later) {
        for (std::size_t earlier = 0; earlier < later; ++earlier) {
            look(earlier, later);
        }
    }
}
