// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/wire/Wire.h"

#include <string>
#include <vector>

// What this machine's kernel knows of the host that has an address.
struct Neighbour {
    enum class State { unknown, absent, present };

    State state = State::unknown;
    std::string why = {}; // it is unknown, as the rest of a sentence
};

// Has a host in a network of this machine this address? Sends it an empty datagram, so that the kernel looks for its
// link-layer address, and watches the kernel's table; neither needs a privilege. Absent is only who was asked for and
// did not answer. What the table has from before the kernel confirms in its own time, which takes longer; but the host
// that has one of the addresses `besides` does not count: it had this one a moment ago.
Task<Neighbour> seekNeighbour(const Wire& wire, std::string address, std::vector<std::string> besides, Seconds time);
