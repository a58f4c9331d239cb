// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Lookup.h"
#include "client/engine/Signal.h"
#include "client/engine/Task.h"
#include "client/wire/Network.h"

#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

// Names that are asked for again and again, each when its time comes. Those whose time comes at about the same moment
// share one Lookup.
class NameRounds
{
public:
    explicit NameRounds(Network& newNetwork) : network(newNetwork) {}

    struct Hearing {
        std::optional<CardReply> answer;
        std::optional<Failure> unasked; // why silence tells nothing
    };

    // As Lookup::answerOf, with what Lookup::unasked says of the interface on which the card was heard before, if it
    // was.
    Task<Hearing> answerOf(std::string name, std::string before);

    // As Lookup::secondAnswers, of all rounds until now.
    std::set<std::string> secondAnswers();

private:
    struct Round {
        explicit Round(EventLoop& loop) : isClosed(loop) {}

        std::vector<std::string> names;
        Signal isClosed; // nobody comes any more
        std::optional<Lookup> lookup;
        std::optional<Task<void>> asking;
        TimePoint end = TimePoint::max(); // of the asking
    };

    Task<void> gather(Round& round);
    static Task<void> ask(Round& round);
    void hear(Round& round);
    void forgetOldRounds();

    Network& network;
    std::shared_ptr<Round> open;               // for whoever comes next
    std::deque<std::shared_ptr<Round>> rounds; // the latest, for second answers that come late
    std::set<std::string> doubts;
};
