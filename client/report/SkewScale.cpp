// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/SkewScale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/core.h>
#include <string_view>

namespace
{

struct Mark {
    double seconds;
    std::string_view label;
};

constexpr double day = 86400;
constexpr std::array marks = {Mark{1, "1 s"},   Mark{60, "1 min"},      Mark{3600, "1 h"},
                              Mark{day, "1 d"}, Mark{365 * day, "1 y"}, Mark{36500 * day, "100 y"}};

constexpr std::string_view minus = "\u2212";

double stretched(double skew)
{
    const double size = std::abs(skew);
    return std::copysign(size <= 1 ? size : 1 + std::log10(size), skew);
}

} // namespace

SkewScale::SkewScale(double largest)
{
    const auto enough =
        std::find_if(marks.begin(), marks.end(), [&](const Mark& mark) { return mark.seconds >= largest; });
    const auto last = enough == marks.end() ? marks.end() - 1 : enough;
    limit = last->seconds;
    for (auto mark = marks.begin(); mark <= last; ++mark) {
        all.insert(all.begin(), {-mark->seconds, fmt::format("{}{}", minus, mark->label)});
        all.push_back({mark->seconds, fmt::format("+{}", mark->label)});
    }
    all.insert(all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2), {0, "0"});
}

double SkewScale::position(double skew) const
{
    return std::clamp(0.5 + stretched(skew) / stretched(limit) / 2, 0.0, 1.0);
}

std::string skewText(double skew)
{
    struct Unit {
        double seconds;
        std::string_view name;
    };
    const double size = std::abs(skew);
    for (const Unit& unit : {Unit{365 * day, "years"}, Unit{day, "days"}, Unit{3600, "h"}, Unit{60, "min"}}) {
        if (size >= 2 * unit.seconds) {
            return fmt::format("{}{:.1f} {}", skew < 0 ? minus : "+", size / unit.seconds, unit.name);
        }
    }
    const std::string seconds = fmt::format("{:.1f} s", size);
    return (seconds == "0.0 s" ? "" : std::string(skew < 0 ? minus : "+")) + seconds;
}
