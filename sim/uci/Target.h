// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Config.h"
#include "sim/uci/ConfigStore.h"
#include "sim/uci/Key.h"

#include <string>

// What a key leads to in its configuration, staged changes included.
struct Target {
    Key key;
    Package package;
    const Section* section = nullptr; // null: not named, or not there
    const Option* option = nullptr;
    bool isComplete = false; // all that the key names is there

    // Throws UciError for a text that is no key and for a configuration that cannot be read.
    Target(const ConfigStore& store, const std::string& argument);
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    // Throws UciError unless complete.
    void require() const;

    // The section's own name, also if the key names it by type and index.
    const std::string& sectionName() const { return section == nullptr ? key.section : section->name; }
};
