// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "sim/uci/Config.h"

#include <string>
#include <string_view>

// Reads the text of a configuration file. Sections of the same type and name are one section; an option line with an
// empty value is as good as none, while an empty item of a list is one.
// Throws UciError with the line of the first thing that is wrong.
Package parseConfig(std::string name, std::string_view text);
