// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/messages/IpConfiguration.h"
#include "client/messages/TimeReference.h"
#include "client/messages/Versions.h"
#include "client/wire/Network.h"

#include <optional>
#include <string>

// What a card tells about itself. Nothing here changes a card. All throw a Failure if the card does not answer,
// refuses, or makes no sense.

// A card's IP configuration, and from where the card sent it.
struct CardIp {
    IpConfiguration configuration;
    std::string address;
    std::string interface;
};

// A card's time reference and how far its clock is ahead of this machine's. The card tells whole seconds, so the skew
// is right to half a second and half the time that the exchange took.
struct TimeReading {
    TimeReference reference;
    double skew = 0;      // seconds
    double skewError = 0; // as much more or less the skew may be
};

Task<CardIp> queryIpConfiguration(Network& network, std::string card, std::optional<RetryPolicy> policy = {});
Task<Versions> queryVersions(Network& network, Endpoint endpoint);
// Asks once, for a card that serves nobody for a while and then answers what waits.
Task<Versions> queryVersionsUntil(Network& network, Endpoint endpoint, TimePoint deadline);
// Explains a refusal: it means that the card has no setting for an NTP server, without which no time can be set.
Task<TimeReading> queryTime(Network& network, Endpoint endpoint);
// Asks once, as above.
Task<TimeReading> queryTimeUntil(Network& network, Endpoint endpoint, TimePoint deadline);
