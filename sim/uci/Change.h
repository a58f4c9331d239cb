// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Config.h"

#include <string>
#include <string_view>
#include <vector>

// One staged change: a value or a section type to set, or something to remove.
struct Change {
    enum class Kind { set, remove };

    Kind kind;
    std::string section;
    std::string option; // empty: the section itself
    std::string value;  // for a section: its type

    // False if the change finds no place: nothing is changed then.
    bool applyTo(Package& package) const;

    // As `changes` lists it and as it is kept: "config.section.option='value'" or "-config.section.option".
    std::string describe(const std::string& config) const;
    // The same without quotes.
    std::string plain(const std::string& config) const;
};

struct StagedChanges {
    std::vector<Change> changes;
    bool hasNonsense = false;
};

// Reads kept changes, one a line; lines that make no sense are left out, as a change store is no place to fail.
StagedChanges parseChanges(std::string_view config, std::string_view text);
