// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// Appends the Interface element of an interface (by its identifier, "vemEth1" or "vemEth2") with its stored
// settings, unescaped. Returns 0, or -1 when a setting that must be there is not; a missing netmask or gateway is
// left out.
int appendInterfaceConfig(std::string_view identifier, std::string& document);
