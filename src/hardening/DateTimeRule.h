// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <string_view>

// Whether the card's clock, which counts in 32 bits, can hold a date and time. `text` is what was asked for and
// `seconds` what it came to: a number with too many digits has come to anything.
[[nodiscard]] bool fitsClock(std::string_view text, std::int64_t seconds);
