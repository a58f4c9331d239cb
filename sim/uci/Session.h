// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/ConfigStore.h"

// The tool of 2014 lists staged changes without quotes.
enum class Generation { of2014, today };

// What the options of a command line say, for its command.
struct Session {
    ConfigStore store;
    Generation generation = Generation::today;
    bool isQuiet = false;
    bool mayCommit = true;
};
