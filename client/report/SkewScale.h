// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <vector>

// Where skews lie on an axis from as many seconds behind to as many ahead: even to one second, by powers of ten beyond,
// so that clocks that are half a second and ten years off have room beside each other.
class SkewScale
{
public:
    struct Tick {
        double skew;
        std::string label;
    };

    // Wide enough for the largest of them.
    explicit SkewScale(double largest);

    // From 0 to 1; 0.5 is a clock that is right.
    [[nodiscard]] double position(double skew) const;
    [[nodiscard]] const std::vector<Tick>& ticks() const { return all; }

private:
    double limit;
    std::vector<Tick> all; // from behind to ahead
};

// "+0.3 s", "-2 min", "+3 days": with the precision that such a skew is worth.
[[nodiscard]] std::string skewText(double skew);
