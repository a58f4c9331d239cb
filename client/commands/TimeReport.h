// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/Context.h"
#include "client/engine/Task.h"
#include "client/messages/TimeReference.h"
#include "client/model/Result.h"
#include "client/wire/Endpoint.h"

// A card's time reference and how far its clock is ahead of this machine's. The card tells whole seconds, so the
// skew is right to about half a second and half the time the exchange took.
struct TimeReading {
    TimeReference reference;
    double skew = 0;
};

// Explains a refusal: it means that the card has no setting for an NTP server, without which no time can be set.
Task<TimeReading> readTime(Context& context, Endpoint endpoint);

void report(const TimeReading& reading, Result& result);
