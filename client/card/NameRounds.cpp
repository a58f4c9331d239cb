// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/NameRounds.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr Seconds gathering{0.05}; // chosen: short beside the time between two looks
constexpr Seconds listening{0.3};  // chosen: for a second answer, behind the last one; a card answers in milliseconds

} // namespace

Task<NameRounds::Hearing> NameRounds::answerOf(std::string name, std::string before)
{
    const bool isFirst = !open;
    if (isFirst) {
        open = std::make_shared<Round>(network.eventLoop());
    }
    // Held here, too: it may be one of the old ones by the time that its answer comes.
    const std::shared_ptr<Round> round = open;
    if (std::find(round->names.begin(), round->names.end(), name) == round->names.end()) {
        round->names.push_back(name);
    }
    if (isFirst) {
        co_await gather(*round);
    }
    co_await round->isClosed;
    if (!round->lookup) {
        throw Interrupted();
    }
    Hearing hearing;
    hearing.answer = co_await round->lookup->answerOf(name);
    hearing.unasked = round->lookup->unasked(before);
    co_return hearing;
}

// The asking goes on beside whoever came first, too: nobody waits for the others' answers.
Task<void> NameRounds::gather(Round& round)
{
    try {
        co_await network.eventLoop().until(after(gathering));
        round.lookup.emplace(network, round.names);
    } catch (const Interrupted&) { // the others hear of it from the missing lookup
    }
    forgetOldRounds();
    rounds.push_back(std::exchange(open, nullptr));
    round.isClosed.set();
    if (round.lookup) {
        round.asking = ask(round);
        round.asking->start();
    }
}

Task<void> NameRounds::ask(Round& round)
{
    co_await round.lookup->run();
    round.end = Clock::now();
}

void NameRounds::hear(Round& round)
{
    if (round.lookup) {
        const std::vector<std::string> more = round.lookup->secondAnswers();
        doubts.insert(more.begin(), more.end());
    }
}

void NameRounds::forgetOldRounds()
{
    std::erase_if(rounds, [&](const std::shared_ptr<Round>& round) {
        const bool isOld = round->end < Clock::now() - std::chrono::duration_cast<Clock::duration>(listening);
        if (isOld) {
            hear(*round);
        }
        return isOld;
    });
}

std::set<std::string> NameRounds::secondAnswers()
{
    for (const std::shared_ptr<Round>& round : rounds) {
        hear(*round);
    }
    return doubts;
}
