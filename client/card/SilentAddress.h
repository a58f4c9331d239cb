// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/LastHeard.h"
#include "client/engine/Task.h"
#include "client/model/Result.h"
#include "client/wire/Network.h"

#include <string>

// Why nobody answered by a name, in words that are the same for many, and what is known of this one.
struct Silence {
    Failure failure;
    Row fields;
};

// Of a name that was never heard, and of one that was, with what is at that address now.
[[nodiscard]] Silence neverHeard();
[[nodiscard]] Silence silenceSince(const LastHeard::Hearing& last, const std::string& thereNow);

// Was the name asked for where it was last heard?
enum class Asking { done, inVain };

// What was seen, until the deadline, of the address where a name that is silent now was last heard: the rest of "an
// address that", such as "refuses connections". Contacts nobody in a dry run, nor where the address is in no network of
// the endpoint's interface: behind a router it may be anybody's.
Task<std::string> whatIsAt(Network& network, Endpoint endpoint, Asking asking, TimePoint deadline);
