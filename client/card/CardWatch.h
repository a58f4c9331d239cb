// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/CardState.h"
#include "client/card/NameRounds.h"
#include "client/card/Target.h"
#include "client/engine/Slots.h"
#include "client/engine/Task.h"
#include "client/messages/Versions.h"
#include "client/wire/Network.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

// A card as it was last seen.
struct Sight {
    CardState state = CardState::notFound;
    std::optional<Endpoint> endpoint;  // where it is asked, if that is known
    bool isLookedUp = false;           // that is what the card itself answered when its name was asked for
    std::string heardOn;               // the interface on which its name was last heard
    std::vector<Component> components; // what it last said, if it is asked for its versions
    std::optional<Failure> hindrance;  // why this machine could not look the last time; all else is from before
};

// Looks at cards again and again: over TCP where an address is known, by their names where none is, or where nobody
// answers there. It changes nothing on them.
class CardWatch
{
public:
    enum class Question { connection, versions };

    // Over TCP at most so many cards are looked at at the same time.
    CardWatch(EventLoop& loop, Network& newNetwork, Question newQuestion, std::size_t places);

    // Never fails: a card that cannot be asked is seen so, and a machine that cannot ask is a hindrance.
    Task<void> look(const Target& target, Sight& sight);

    // As Lookup::secondAnswers, of all looks until now.
    [[nodiscard]] std::set<std::string> secondAnswers() { return rounds.secondAnswers(); }

private:
    Task<void> lookOverTcp(Sight& sight);
    Task<void> lookByName(std::string name, Sight& sight);

    Network& network;
    Question question;
    NameRounds rounds;
    Slots polls;
};
