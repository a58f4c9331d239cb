// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/IpMemory.h"
#include "client/model/Result.h"

#include <string>

// What cards had before changes that were made from here, as `ip rescue` lists it and goes back to it. Of a card that
// was never changed both throw a usage Failure.
void listFormerSettings(const std::string& card, Result& result);
[[nodiscard]] RememberedIp formerSettings(const std::string& card, int number); // as it is listed: 1 is the newest

// When they were left, and how long ago; nothing if that was not noted.
[[nodiscard]] Cell timeCell(const RememberedIp& entry);
[[nodiscard]] Cell ageCell(const RememberedIp& entry);
