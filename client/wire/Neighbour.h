// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/wire/Wire.h"

#include <optional>
#include <string>

// Has a host in a network of this machine this address? Sends it an empty datagram, so that the kernel looks for its
// link-layer address, and watches the kernel's table; neither needs a privilege. What the table has from before the
// kernel confirms in its own time, which takes longer; but the host that has the address `besides` does not count: it
// had this one a moment ago. Nothing if it cannot be told: the address is in none of this
// machine's networks, or it is a dry run.
Task<std::optional<bool>> seekNeighbour(const Wire& wire, std::string address, std::string besides, Seconds time);
