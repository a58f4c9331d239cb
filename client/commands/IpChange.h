// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Context.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/messages/IpConfiguration.h"

#include <optional>
#include <string>

// Changing an interface of a card and seeing it through.

// Sends the interface's configuration by broadcast, once; true if the card confirmed it, false if nothing came back.
// Throws if the card refuses.
Task<bool> sendIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, std::string onlyInterface);

// What a card's answers prove of a configuration: nothing, that its settings say so, or that its network does.
enum class Proof { none, stored, applied };

// Asks the card again and again until it answers by its name with the wanted configuration, and from no address that
// contradicts what it says. `seen` is what it answered last.
Task<Proof> awaitIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, TimePoint deadline,
                                 std::optional<InterfaceConfig>& seen);

// Sends and asks in turns until the card has the configuration or the time is over; reaches a card whatever its
// address is. Throws if the card refuses.
Task<Proof> forceIpConfiguration(Context& context, std::string card, InterfaceConfig wanted, Seconds time,
                                 std::optional<InterfaceConfig>& seen);
