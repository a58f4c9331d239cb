// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/completion/CommandShape.h"

#include <string>

// Completion scripts, each complete: commands, options, values, and the cards and groups of the groups file.
[[nodiscard]] std::string bashCompletion(const ProgramShape& shape);
[[nodiscard]] std::string zshCompletion(const ProgramShape& shape);
[[nodiscard]] std::string fishCompletion(const ProgramShape& shape);
