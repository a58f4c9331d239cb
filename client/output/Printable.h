// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// Text of a card as it may be shown on a terminal: control characters become \xNN, so that no card can move the
// cursor or colour the screen.
[[nodiscard]] std::string printable(std::string_view text);

// The same for each line of a text of several.
[[nodiscard]] std::string printableLines(std::string_view text);
