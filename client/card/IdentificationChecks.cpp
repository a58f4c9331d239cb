// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// What targets are to each other, once it is known of each who answers.
#include "client/card/Identification.h"

#include "client/card/Ambiguity.h"
#include "client/card/SameCard.h"
#include "client/model/Contains.h"

#include <algorithm>
#include <fmt/core.h>
#include <utility>

void Identification::compareNames(std::vector<Identified>& cards, Identified& one, Identified& other) const
{
    const std::optional<Endpoint> shared = sharedEndpoint(one, other, way);
    if (!shared) {
        return;
    }
    const std::string why =
        fmt::format("{} and {} both lead to {}", one.target.name, other.target.name, shared->address);
    object(one, why);
    object(other, why);
    for (Identified& card : cards) {
        if (!isName(card) && card.target.endpoint == shared) {
            object(card, why);
        }
    }
}

void Identification::compare(std::vector<Identified>& cards) const
{
    forEachPair(cards, [&](std::size_t earlier, std::size_t later) {
        Identified& one = cards[earlier];
        Identified& other = cards[later];
        if (isName(one) && isName(other) && one.target.name != other.target.name) {
            compareNames(cards, one, other);
        }
    });
    markTwice(cards);
}

void Identification::hearAgain(std::vector<Identified>& cards, Lookup& first, Lookup& behindProbe) const
{
    for (Identified& card : cards) {
        if (!card.isSlow || card.refusal) {
            continue;
        }
        try {
            const std::vector<CardReply>& answers = behindProbe.answersTo(card.target.name);
            card.isSlow = std::ranges::none_of(answers, [&](const CardReply& answer) {
                return answer.address == card.target.endpoint->address &&
                       answer.interface == card.target.endpoint->interface;
            });
            // One of two cards may have answered the first time, and the other behind the probe.
            std::vector<CardReply> all = first.answersTo(card.target.name);
            all.insert(all.end(), answers.begin(), answers.end());
            std::optional<std::string> why = ambiguityOf(all);
            if (why && !contains(card.warnings, *why)) {
                object(card, *std::move(why));
            }
        } catch (const Failure&) { // it could not be asked again
        }
    }
}

void Identification::check(std::vector<Identified>& cards, const Census& census) const
{
    // First: an address that turns out to be another card's must not make two targets one.
    disbelieve(cards, census);
    const HostInterfaces here;
    std::vector<Census::Verdict> verdicts; // all before the first refusal: a refused target is none of the others
    for (const Identified& card : cards) {
        const std::optional<Endpoint>& endpoint = card.target.endpoint;
        // A forwarded port leads to where no probe of ours is heard.
        const bool isCovered = endpoint && endpoint->port == cardPort;
        verdicts.push_back(isCovered ? census.judge(*endpoint, sendersOf(cards, card), here) : Census::Verdict{});
    }
    for (std::size_t index = 0; index < cards.size(); ++index) {
        Identified& card = cards[index];
        Census::Verdict& verdict = verdicts[index];
        if (verdict.objection) {
            object(card, *std::move(verdict.objection));
        } else if (!card.refusal && !verdict.interface.empty()) {
            card.target.endpoint->interface = std::move(verdict.interface);
            // The one answer may be that of another, which is faster.
            card.checked = std::ranges::none_of(
                cards, [&](const Identified& other) { return other.isSlow && isOneCard(card, other); });
        }
    }
    markTwice(cards);
}

// One of them may have been a second card's.
void Identification::takeLoss(std::vector<Identified>& cards)
{
    for (Identified& card : cards) {
        if (std::exchange(card.checked, false)) {
            card.warnings.emplace_back("whether two cards share its address was not checked: answers were lost");
        }
    }
}
