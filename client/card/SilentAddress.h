// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/wire/Network.h"

#include <string>

// What was seen, until the deadline, of the address where a name that is silent now was last heard: the rest of
// "an address that", such as "refuses connections". Contacts nobody in a dry run, nor behind a router, where the
// address may be anybody's.
Task<std::string> whatIsAt(Network& network, Endpoint endpoint, TimePoint deadline);
