// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/OptionSet.h"
#include "client/messages/IpConfiguration.h"

#include <optional>
#include <string>

// The options that say what an interface shall be: of `ip set` and `ip rescue`.
class IpOptions
{
public:
    void declare(OptionSet& options);
    [[nodiscard]] bool given() const { return !interface.empty() || modesGiven() > 0; }
    // Throws a usage Failure unless it is one interface and one mode that can be right.
    [[nodiscard]] InterfaceConfig interfaceConfig() const;

    double wait = 30; // seconds until the card must be back

private:
    [[nodiscard]] int modesGiven() const { return (fixed ? 1 : 0) + (dhcp ? 1 : 0) + (disabled ? 1 : 0); }

    std::string interface;
    std::optional<std::string> fixed;
    bool dhcp = false;
    bool disabled = false;
};

// What the state `stored` means, for people.
[[nodiscard]] std::string onlyStored(const std::string& interface);
