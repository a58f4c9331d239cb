// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/wire/HostInterfaces.h"
#include "client/wire/Network.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

using Sender = std::pair<std::string, std::string>; // an address, and the interface on which it was heard

// How often each address answered one and the same probe. Twice on one interface: two cards share it. Costs a warning
// in the log of every card, and hears no card that is busy, or behind a router.
class Census
{
public:
    // Broadcasts one probe on each interface and listens for a moment; with questions behind it until they are over,
    // and for a moment then. A card takes what it is asked in its order: who has answered such a question, however
    // late, has answered the probe, if it ever does.
    Task<void> take(Network& network, std::function<Task<void>()> questions = {});
    void note(const Datagram& answer) { ++answers[{answer.address, answer.interface}]; }

    // The most that one interface heard.
    [[nodiscard]] int answersFrom(const std::string& address) const;

    // The interfaces on which it answered.
    [[nodiscard]] std::vector<std::string> hearersOf(const std::string& address) const;

    struct Verdict {
        std::optional<std::string> objection; // why a connection may reach another card
        std::string interface = {};           // where the address answered, and is reached; empty: nowhere
    };
    // The senders that are known to be the card that is meant are no others.
    [[nodiscard]] Verdict judge(const Endpoint& endpoint, const std::set<Sender>& known,
                                const HostInterfaces& here) const;

private:
    Task<void> listen(Network& network, const std::vector<BroadcastSocket>& sockets, const Request& probe,
                      const bool& isOver);

    std::map<Sender, int> answers;
};
