// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/report/Html.h"

#include <string>
#include <vector>

struct PlottedClock {
    std::string label;
    double skew;
};

// A dot for each clock over an axis of the skew, those of about the same skew above each other. It is an image with a
// text that says the same in short, and as wide as its place: positions across are in percent, so that letters keep
// their size. There must be a clock.
[[nodiscard]] Html clockPlot(const std::vector<PlottedClock>& clocks);
