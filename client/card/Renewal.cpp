// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Renewal.h"

#include "client/card/Ambiguity.h"
#include "client/card/SameCard.h"

#include <fmt/core.h>
#include <utility>

namespace
{

constexpr Seconds gathering{0.05}; // chosen: short beside the listening

std::vector<Target> targetsOf(const Identified& card)
{
    std::vector<Target> targets = {card.given};
    for (const Identified& same : card.again) {
        targets.push_back(same.given);
    }
    return targets;
}

} // namespace

Renewal::Renewal(Network& newNetwork, Way newWay, Caution newCaution)
    : network(newNetwork), identification(newNetwork, newWay, newCaution), force(newCaution.force)
{
}

Task<void> Renewal::renew(Identified& card)
{
    if (Clock::now() - card.asOf < longest) {
        co_return;
    }
    card.checked = false;
    std::vector<Identified> found = co_await identifyAgain(targetsOf(card));
    for (Identified& now : found) {
        if (now.refusal) {
            card.refusal = std::move(now.refusal);
            card.silence = std::move(now.silence);
            throw Failure(*card.refusal);
        }
    }
    for (std::size_t index = 0; index < card.again.size(); ++index) {
        take(card.again[index], std::move(found[index + 1]));
    }
    take(card, std::move(found.front()));
    for (const Identified& same : card.again) {
        if (!isOneCard(card, same) && !force) {
            throw ambiguous(fmt::format("{} was {} before, and is not now", same.target.label, card.target.label));
        }
    }
}

// Who comes first asks for all who come meanwhile.
Task<std::vector<Identified>> Renewal::identifyAgain(std::vector<Target> targets)
{
    const bool isFirst = !open;
    if (isFirst) {
        open = std::make_shared<Round>(network.eventLoop());
    }
    const std::shared_ptr<Round> round = open;
    const auto start = static_cast<std::ptrdiff_t>(round->targets.size());
    const auto count = static_cast<std::ptrdiff_t>(targets.size());
    round->targets.insert(round->targets.end(), targets.begin(), targets.end());
    if (isFirst) {
        co_await ask(*round);
    }
    co_await round->isOver;
    if (round->error) {
        std::rethrow_exception(round->error);
    }
    const auto first = round->found.begin() + start;
    co_return std::vector<Identified>(first, first + count);
}

Task<void> Renewal::ask(Round& round)
{
    try {
        co_await network.eventLoop().until(after(gathering));
    } catch (...) {
        round.error = std::current_exception();
    }
    open.reset(); // who comes from now on asks again
    try {
        if (!round.error) {
            round.found = co_await identification.run(round.targets);
        }
    } catch (...) {
        round.error = std::current_exception();
    }
    round.isOver.set();
}

void Renewal::take(Identified& card, Identified now) const
{
    std::optional<std::string> change = changeSince(card, now);
    if (change && !force) {
        throw ambiguous(*std::move(change));
    }
    if (change) {
        now.warnings.push_back(*std::move(change));
    }
    const bool isSilentNow = now.heardAt.empty() && !card.heardAt.empty();
    if (isSilentNow || (!now.checked && !isName(card))) { // what was seen of it before is the best that is known
        now.target = card.target;
        now.heardFrom = card.heardFrom;
        now.heardAt = card.heardAt;
        now.stated = card.stated;
    }
    now.again = std::move(card.again);
    card = std::move(now);
}
