// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/messages/IpConfiguration.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What the interfaces of a card were before the changes made from here, so that a lost card can be rescued in a later
// run. Kept in the state folder, one small file for each card.

inline constexpr std::size_t mostRemembered = 8; // for each interface of a card; chosen

struct RememberedIp {
    InterfaceConfig settings;
    std::optional<std::int64_t> time; // of the change, in seconds since 1970; files of old do not tell

    bool operator==(const RememberedIp&) const = default;
};

// Adds the newest. False if it cannot be written; the change itself does not depend on it.
bool rememberIp(const std::string& card, const InterfaceConfig& interface, std::int64_t now);

// All that is known of a card, the newest first.
[[nodiscard]] std::vector<RememberedIp> rememberedIps(const std::string& card);
