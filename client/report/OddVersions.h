// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/FleetCard.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

// Which version of a component is the usual one, and which cards have another. To lack a component is a version, too.
class OddVersions
{
public:
    struct Usual {
        bool exists = false;                // is there a version that more cards have than any other?
        std::optional<std::string> version; // nothing: most lack the component

        bool operator==(const Usual&) const = default;
    };

    explicit OddVersions(const std::vector<FleetCard>& cards);

    // Of all cards that told their versions, in the order in which they first appear.
    [[nodiscard]] const std::vector<std::string>& components() const { return ids; }
    [[nodiscard]] const Usual& usual(const std::string& id) const { return usualOf.at(id); }
    // Without a usual version all are odd.
    [[nodiscard]] bool isOdd(const std::string& id, const std::optional<std::string>& version) const;
    [[nodiscard]] bool isOdd(const FleetCard& card) const;

    // What a card says of the component; several times if it says so several times.
    [[nodiscard]] static std::optional<std::string> versionAt(const FleetCard& card, const std::string& id);

private:
    std::vector<std::string> ids;
    std::map<std::string, Usual> usualOf;
};
