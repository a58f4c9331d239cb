// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

// What tells the samples of a metric from each other, in the order in which it is printed.
using Labels = std::vector<std::pair<std::string, std::string>>;

// A metric that may rise and fall, in the text format of Prometheus. A text of a card becomes a value that keeps the
// format whole: it is made printable, and what means something between quotes is escaped.
class Gauge
{
public:
    Gauge(std::string newName, std::string newHelp) : name(std::move(newName)), help(std::move(newHelp)) {}

    // A second sample with the same labels would spoil the file for its reader: the first one counts.
    void add(const Labels& labels, double value);
    // What it is, and all its samples in the order in which they were added; empty if there is none.
    [[nodiscard]] std::string text() const;

private:
    std::string name;
    std::string help;
    std::set<std::string> known; // sets of labels, as they are printed
    std::string samples;
};
