// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/messages/IpConfiguration.h"
#include "client/messages/Versions.h"
#include "client/model/Failure.h"

#include <cmath>
#include <optional>
#include <string>
#include <vector>

// What was learned of one card when it was looked at.
struct FleetCard {
    struct Clock {
        double skew;        // seconds that it is ahead of this machine's
        double error;       // as much more or less it may be
        std::string source; // what it is set by: "Ntp 10.0.0.1", "Manual"

        // Is it more than a second off for sure?
        [[nodiscard]] bool isOff() const { return std::abs(skew) - error > 1; }
    };

    std::string label;   // as the user named it
    std::string address; // where it was asked over TCP; empty if that is not known
    std::optional<std::vector<Component>> components{};
    std::optional<Clock> clock{};
    std::optional<IpConfiguration> settings{};
    std::string heardFrom{};         // what sent the settings
    bool isAskedByName = false;      // its settings were asked for
    std::vector<Failure> failures{}; // in the order in which they came
    std::string lastSeen{};          // of a name that is silent: "10.0.0.11, 2 min ago"

    [[nodiscard]] bool answered() const { return components || clock || settings; }
};
