// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#pragma once

#include <string>
#include <string_view>

#include "sim/uci/Config.h"

// Reads the text of a configuration file. Sections of the same type and name are one section.
// Throws UciError with the line of the first thing that is wrong.
Package parseConfig(std::string name, std::string_view text);
