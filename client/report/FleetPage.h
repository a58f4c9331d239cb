// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/Fleet.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// When, and by what, a fleet was looked at.
struct Look {
    std::int64_t began; // seconds since 1970
    std::int64_t ended;
    std::string client; // "tarvelctl 1.0"
};

// The report as one HTML document that needs nothing else: readable without its script, which sorts and filters.
[[nodiscard]] std::string fleetPage(const Look& look, const Fleet& fleet);

struct Blank {
    std::string_view name;
    std::string text;
};

// The template with each {{name}} replaced. What was put in is not looked at again, whatever it holds.
[[nodiscard]] std::string filledIn(std::string_view pageTemplate, const std::vector<Blank>& blanks);
