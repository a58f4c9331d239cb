// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Queries.h"
#include "client/messages/Versions.h"

#include <optional>
#include <string>
#include <vector>

// What is known of one card after it was asked.
struct CardMetrics {
    std::string card;                   // its name, or its address
    std::string address;                // empty if none is known
    std::optional<Versions> versions;   // nothing if it did not tell them: it is down
    std::optional<TimeReading> reading; // nothing if it did not tell its time
    double seconds = 0;                 // that its answers took
    std::string failure;                // the category; empty if all is well
};

// When all of them were asked.
struct Poll {
    double seconds = 0; // that it took
    double end = 0;     // seconds since 1970
};

// The file for Prometheus. Of a card that is down it tells that, and why, and nothing else.
[[nodiscard]] std::string metricsText(const std::vector<CardMetrics>& cards, const Poll& poll);
