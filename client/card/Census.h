// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/wire/Network.h"

#include <map>
#include <string>
#include <utility>

// How often each address answered one and the same probe. Twice on one interface: two cards share it. Costs a warning
// in the log of every card, and hears no card that is busy, or behind a router.
class Census
{
public:
    // Broadcasts one probe on each interface and listens for a moment.
    Task<void> take(Network& network);
    void note(const Datagram& answer) { ++answers[{answer.address, answer.interface}]; }

    // The most that one interface heard.
    [[nodiscard]] int answersFrom(const std::string& address) const;

private:
    std::map<std::pair<std::string, std::string>, int> answers; // by address and interface
};
