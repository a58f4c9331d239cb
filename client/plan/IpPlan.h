// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/messages/IpConfiguration.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// "10.0.0.11/24", "10.0.0.11/255.255.255.0", each with ",10.0.0.1" for the gateway. Throws a usage Failure for what
// cannot be right: no addresses, a host part of all zeros or ones, a gateway outside the net.
[[nodiscard]] InterfaceConfig parseStatic(std::string_view interface, std::string_view text);

// "VemkEth1" and "VemkEth2"; throws a usage Failure for anything else.
void requireInterfaceName(std::string_view name);

// What setting one interface of a card means: shown before it is done, and how to undo it.
struct IpPlan {
    std::optional<InterfaceConfig> now; // unknown if the card refused to tell
    InterfaceConfig wanted;
    std::vector<std::string> effects;        // beyond the wanted values, in sentences
    std::optional<InterfaceConfig> rollback; // to be sent to undo the change
    std::string noRollback;                  // why there is none

    [[nodiscard]] bool nothingToDo() const { return now == wanted; }
};

// Throws a usage Failure if both interfaces would be disabled, which a card refuses.
[[nodiscard]] IpPlan planIp(const std::optional<IpConfiguration>& now, InterfaceConfig wanted);

// "Static 10.0.0.11/255.255.255.0 gateway 10.0.0.1", "Dhcp", "Disabled".
[[nodiscard]] std::string describe(const InterfaceConfig& interface);
