// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/cli/OptionSet.h"

#include <optional>
#include <string>
#include <vector>

// What every command understands, before or after its name.
struct GlobalOptions {
    std::string output = "table";
    std::optional<double> timeout; // seconds for one step: to connect, to be answered
    int retries = 2;               // of requests that change nothing
    int parallel = 64;             // targets at once
    std::vector<std::string> interfaces;
    std::vector<std::string> exclude;
    std::string groupsFile;             // empty: the one in the user's configuration folder
    std::optional<std::string> columns; // comma-separated; else all
    bool fold = false;
    bool quiet = false;
    bool verbose = false;
    bool dryRun = false;
    bool yes = false;
    bool force = false;
    bool trustGroups = false;
    bool noProbe = false;
    bool unsafeRaw = false;

    void declare(OptionSet& options);
};
