// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/uci/ConfigStore.h"

// Runs one verb of the tool and returns what it prints. Throws UciError when it fails, UsageError when the verb is
// unknown or its arguments make no sense.
std::string runCommand(const ConfigStore& store, std::string_view verb, const std::vector<std::string>& arguments);
