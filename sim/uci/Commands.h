// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Session.h"

#include <string>
#include <string_view>
#include <vector>

struct ToolResult {
    int status = 0;
    std::string output;
    std::string errors;
};

// Runs one verb of the tool; a failure is in the result. Throws UsageError when the verb is unknown or has too few or
// too many arguments, NotSimulated when only the real tool knows what to do.
ToolResult runCommand(const Session& session, const std::string& verb, const std::vector<std::string>& arguments);
