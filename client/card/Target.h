// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/wire/Endpoint.h"
#include "client/wire/Network.h"

#include <optional>
#include <string>
#include <vector>

// One card as the user named it.
struct Target {
    std::string label;                     // what the user wrote; stands in all output
    std::string name;                      // empty if only an address is known
    std::optional<Endpoint> endpoint;      // nothing if only a name is known
    std::vector<std::string> otherNames{}; // that the user wrote down beside this one for the address
    std::optional<CardReply> heard{};      // what the card of that name told when it was looked up, if it was

    // Of name and address, the user wrote one here and may have written down the other long ago.
    [[nodiscard]] bool isAddress() const { return label != name; }
    [[nodiscard]] bool hasNotedAddress() const { return !isAddress() && endpoint.has_value(); }
    [[nodiscard]] bool hasNotedName() const { return isAddress() && !name.empty(); }
    // The same of two or more; nothing if there is one at most.
    [[nodiscard]] std::optional<std::string> doubtOfName() const;
};
