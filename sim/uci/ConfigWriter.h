// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Config.h"

#include <string>
#include <string_view>

// The value between single quotes, ready for a configuration file or a shell.
std::string quoted(std::string_view value);

// A configuration file as the tool writes it; reading it gives the same package again.
std::string writeConfig(const Package& package);
