// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Identification.h"
#include "client/engine/Signal.h"
#include "client/engine/Task.h"

#include <exception>
#include <memory>
#include <vector>

// Whom a target means is found out before the first card is changed, and goes stale while others have their turn, or a
// person is asked. Before a card is changed that has waited for long it is found out again, and compared. Cards whose
// turn comes at about the same moment share the questions, which are a line each in the log of every card.
class Renewal
{
public:
    static constexpr Seconds longest{5}; // chosen: what is older may be another card by now

    Renewal(Network& newNetwork, Way newWay, Caution newCaution);

    // Throws a Failure if another card could be meant now, or the card is no longer heard where it has to be; it is
    // refused then, with what is known of its silence.
    Task<void> renew(Identified& card);

private:
    struct Round {
        explicit Round(EventLoop& loop) : isOver(loop) {}

        std::vector<Target> targets;
        std::vector<Identified> found;
        std::exception_ptr error;
        Signal isOver;
    };

    Task<std::vector<Identified>> identifyAgain(std::vector<Target> targets);
    Task<void> ask(Round& round);
    void take(Identified& card, Identified now) const;

    Network& network;
    Identification identification;
    bool force;
    std::shared_ptr<Round> open; // for whoever comes next
};
