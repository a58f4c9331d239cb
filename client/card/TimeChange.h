// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Queries.h"
#include "client/engine/EventLoop.h"
#include "client/engine/Task.h"
#include "client/messages/TimeReference.h"
#include "client/wire/Network.h"

#include <cstdint>

enum class TimeOutcome { done, doneLate }; // late: the answer did not come in time, but the card has it

// How far a change got.
struct TimeProgress {
    bool told = false;                  // something left this machine that changes the card
    std::optional<TimeReading> reading; // what the card said afterwards
};

// How long a card may take to answer. Told to follow NTP, it first asks time servers of its own, each for some seconds,
// and its scripts may be slow.
[[nodiscard]] Seconds timeToAnswer(const Network& network, TimeMode wanted);

// May a clock that showed the one show the other after that time? A card tells whole seconds.
[[nodiscard]] bool isSameClock(std::int64_t then, std::int64_t now, Seconds passed);

// Sets a card's time reference and reads it back, also when the card refuses or does not answer in time: then for at
// most as long again. Throws a verification Failure if the card says that it has something else, a noAnswer one if it
// confirmed the change and does not tell, and an interrupted one that says whether it was told.
Task<TimeOutcome> setTimeReference(Network& network, Endpoint endpoint, TimeRequest wanted, TimeProgress& progress);
