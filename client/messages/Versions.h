// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct Component {
    std::string id;
    std::string version;

    bool operator==(const Component&) const = default;
};

// What a card reports about itself. `malformed`: the text was no XML, because the card does not escape what it puts
// in, and was read by the fixed grammar of the report.
struct Versions {
    std::vector<Component> components;
    bool malformed = false;
};

// Throws a protocol Failure if the text is not even nearly a report.
[[nodiscard]] Versions parseVersions(const std::string& text);
