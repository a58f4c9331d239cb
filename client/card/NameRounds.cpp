// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/NameRounds.h"

#include <algorithm>

namespace
{

constexpr Seconds gathering{0.05}; // chosen: short beside the time between two looks

} // namespace

Task<std::optional<CardReply>> NameRounds::answerOf(std::string name)
{
    const bool isFirst = !open;
    if (isFirst) {
        open = std::make_shared<Round>(network.eventLoop());
    }
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
    std::optional<CardReply> answer = co_await round->lookup->answerOf(name);
    co_return answer;
}

// The asking goes on beside whoever came first, too: nobody waits for the others' answers.
Task<void> NameRounds::gather(Round& round)
{
    try {
        co_await network.eventLoop().until(after(gathering));
        round.lookup.emplace(network, round.names);
    } catch (const Interrupted&) { // the others hear of it from the missing lookup
    }
    open.reset();
    round.isClosed.set();
    if (round.lookup) {
        round.asking = round.lookup->run();
        round.asking->start();
    }
}
