// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/Gauge.h"

#include "client/output/Printable.h"

#include <cmath>
#include <fmt/core.h>

namespace
{

std::string escaped(const std::string& value)
{
    std::string text;
    for (const char letter : printable(value)) {
        text += letter == '\\' || letter == '"' ? "\\" : "";
        text += letter;
    }
    return text;
}

std::string textOf(const Labels& labels)
{
    std::string text;
    for (const auto& [name, value] : labels) {
        text += fmt::format("{}{}=\"{}\"", text.empty() ? "" : ",", name, escaped(value));
    }
    return text.empty() ? "" : "{" + text + "}";
}

// More than any clock here tells would be noise.
double toMicroseconds(double value)
{
    constexpr double microsecondsPerSecond = 1e6;
    return std::round(value * microsecondsPerSecond) / microsecondsPerSecond;
}

} // namespace

void Gauge::add(const Labels& labels, double value)
{
    const std::string series = textOf(labels);
    if (known.insert(series).second) {
        samples += fmt::format("{}{} {}\n", name, series, toMicroseconds(value));
    }
}

std::string Gauge::text() const
{
    return samples.empty() ? "" : fmt::format("# HELP {0} {1}\n# TYPE {0} gauge\n{2}", name, help, samples);
}
