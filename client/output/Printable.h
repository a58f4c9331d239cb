// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text of a card as it may be shown on a terminal. The bytes of what would move the cursor, colour the screen, end the
// line or turn the direction of reading become \xNN, and so do bytes that are no UTF-8.
[[nodiscard]] std::string printable(std::string_view text);

// The same for each line of a text of several.
[[nodiscard]] std::string printableLines(std::string_view text);

// How wide such a text is: a letter of East Asia, or a picture, takes two columns, and any other letter one; and as
// much of it as this many columns have room for, with three dots where it is cut.
[[nodiscard]] std::size_t columnsOf(std::string_view printed);
[[nodiscard]] std::string cutTo(std::string printed, std::size_t columns);
