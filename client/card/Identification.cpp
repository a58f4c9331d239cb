// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identification.h"

#include "client/card/Ambiguity.h"
#include "client/card/GroupsNote.h"
#include "client/card/Identity.h"
#include "client/card/ReadBack.h"
#include "client/card/SameCard.h"
#include "client/engine/Parallel.h"
#include "client/model/Remedy.h"
#include "client/wire/Phase.h"

#include <algorithm>
#include <cstdint>
#include <fmt/core.h>
#include <functional>
#include <set>

namespace
{

std::vector<std::string> slowNames(const std::vector<Identified>& cards)
{
    std::set<std::string> names;
    for (const Identified& card : cards) {
        if (card.isSlow && !card.refusal) {
            names.insert(card.target.name);
        }
    }
    return {names.begin(), names.end()};
}

} // namespace

Identification::Identification(Network& newNetwork, Way newWay, Caution newCaution)
    : network(newNetwork), way(newWay), caution(newCaution)
{
}

Task<std::vector<Identified>> Identification::run(std::vector<Target> targets)
{
    Lookup lookup(network, namesToAsk(targets));
    co_await lookup.hearOut();
    std::vector<Identified> cards(targets.size());
    const TimePoint now = Clock::now();
    for (std::size_t index = 0; index < cards.size(); ++index) {
        cards[index].given = targets[index];
        cards[index].target = std::move(targets[index]);
        cards[index].asOf = now;
    }
    const HostInterfaces here;          // for the answers of all
    constexpr std::size_t atOnce = 256; // of those whose last address is looked at, in one time-out for all
    co_await inParallel(network.eventLoop(), cards.size(), atOnce,
                        [&](std::size_t index) { return identify(cards[index], lookup, here); });
    compare(cards);
    // Behind the comparison: for targets that are refused by now nobody needs to be probed.
    if (way == Way::overTcp && caution.probe && network.admitsProbes()) {
        co_await probe(cards, lookup);
    }
    co_return cards;
}

Task<void> Identification::probe(std::vector<Identified>& cards, Lookup& lookup) const
{
    if (std::ranges::none_of(cards, [](const Identified& card) { return !card.refusal; })) {
        co_return; // it costs every card a warning
    }
    const TimePoint start = Clock::now();
    const std::vector<std::string> names = slowNames(cards);
    Lookup behindProbe(network, names);
    std::function<Task<void>()> questions;
    if (!names.empty()) {
        questions = [&behindProbe] { return behindProbe.hearOut(); };
    }
    Census census;
    const std::uint64_t lostBefore = network.lost().count();
    const std::optional<Failure> failure = co_await failureOf(census.take(network, questions));
    if (failure) {
        takeDeafness(cards, *failure);
    } else {
        hearAgain(cards, lookup, behindProbe);
        check(cards, census);
        if (network.lost().count() > lostBefore) {
            takeLoss(cards);
        }
    }
    // Else one slow card would make all names old, which are then asked for again, and it again.
    const auto spent = Clock::now() - start;
    for (Identified& card : cards) {
        card.asOf += spent;
    }
}

// A machine that can hear nobody can do no more than go on, with what the user wrote; one that is told where to listen
// and cannot is told wrongly.
void Identification::takeDeafness(std::vector<Identified>& cards, const Failure& why) const
{
    const bool canHearNobody = why.category == Category::noInterface && !network.isToldInterfaces();
    for (Identified& card : cards) {
        if (card.refusal) {
            continue;
        }
        if (canHearNobody) {
            card.warnings.push_back(fmt::format("whether two cards share its address was not checked: {}", why.hint));
        } else {
            card.refusal = why;
            card.refusal->hint += fmt::format("; nothing was sent, {} does not ask who shares the address",
                                              wordOf(Remedy::leaveOutProbe));
        }
    }
}

bool Identification::asksFor(const Target& target) const
{
    return way != Way::overTcp || !target.isAddress();
}

std::vector<std::string> Identification::namesToAsk(const std::vector<Target>& targets) const
{
    std::set<std::string> known;
    std::vector<std::string> names;
    for (const Target& target : targets) {
        if (asksFor(target) && !target.doubtOfName() && known.insert(target.name).second) {
            names.push_back(target.name);
        }
    }
    return names;
}

Task<void> Identification::identify(Identified& card, Lookup& lookup, const HostInterfaces& here) const
{
    if (!asksFor(card.target)) {
        co_return;
    }
    if (const std::optional<std::string> doubt = card.target.doubtOfName()) {
        card.refusal = severalNames(*doubt);
        co_return;
    }
    try {
        // What ended the asking is thrown for each name: without an answer none of them can be said to be silent.
        std::vector<CardReply> answers = inPhase(waitingForIp, [&] { return lookup.answersTo(card.target.name); });
        if (answers.empty()) {
            co_await takeSilence(card, lookup);
            co_return;
        }
        Target noted = card.target;
        card.isSlow = lookup.isSlow(card.target.name);
        hear(card, std::move(answers), here);
        co_await confirm(card, std::move(noted));
    } catch (const Failure& failure) {
        refuse(card, failure);
    } catch (const Interrupted&) {
        card.refusal = Failure{ExitCode::interrupted, Category::interrupted, lookingForCard, "interrupted"};
    }
}

// That another card could be meant outweighs what else is found.
void Identification::refuse(Identified& card, const Failure& why)
{
    if (!card.refusal) {
        card.refusal = why;
    }
}

void Identification::hear(Identified& card, std::vector<CardReply> answers, const HostInterfaces& here) const
{
    preferReachable(answers, here);
    try {
        takeAnswers(card, answers, here);
    } catch (const Failure& failure) {
        refuse(card, failure);
    }
}

Task<void> Identification::takeSilence(Identified& card, Lookup& lookup) const
{
    const Target& target = card.target;
    if (way == Way::byNameUnheard) {
        co_return;
    }
    Silence silence = co_await lookup.explainSilence(target.name);
    card.silence = std::move(silence.fields);
    if (way != Way::overTcp || !target.endpoint) {
        throw Failure(silence.failure);
    }
    if (!caution.trustGroups) {
        throw Failure(notHeard(target, silence.failure));
    }
    card.warnings.push_back(
        fmt::format("not heard by its name; the groups file says that it is at {}", target.endpoint->address));
}

void Identification::takeAnswers(Identified& card, const std::vector<CardReply>& answers,
                                 const HostInterfaces& here) const
{
    for (const CardReply& answer : answers) {
        card.heardAt.insert({answer.address, answer.interface});
        if (!contains(card.heardFrom, answer.address)) {
            card.heardFrom.push_back(answer.address);
        }
    }
    card.target.heard = answers.front();
    card.stated = statedAddresses(answers.front());
    const std::optional<std::string> why = ambiguityOf(answers);
    if (why) {
        object(card, *why);
    }
    if (isNotedElsewhere(card.target, card) && !contains(card.stated, card.target.endpoint->address)) {
        throw Failure(staleNote(card.target, answers));
    }
    if (way == Way::overTcp) {
        card.target.endpoint = settledEndpoint(card.target, answers, here);
    }
}

bool Identification::isNotedElsewhere(const Target& noted, const Identified& card) const
{
    const bool isUsed = way == Way::overTcp ? noted.hasNotedAddress() : noted.hasNotedName();
    return isUsed && !contains(card.heardFrom, noted.endpoint->address);
}

// That its settings have the noted address is no proof where another card can have it.
Task<void> Identification::confirm(Identified& card, Target noted) const
{
    if (card.refusal || !isNotedElsewhere(noted, card)) {
        co_return;
    }
    noted.heard = card.target.heard;
    const std::optional<CardReply> answer = co_await confirmNote(network, std::move(noted));
    if (answer) {
        takeAnswers(card, {*answer}, HostInterfaces()); // it was waited for
    }
}

void Identification::object(Identified& card, std::string why) const
{
    if (caution.force) {
        card.warnings.push_back(std::move(why));
    } else if (!card.refusal) {
        card.refusal = ambiguous(why);
    }
}
