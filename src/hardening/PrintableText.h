// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// The text with a question mark in place of each control character: those of ASCII, and those that UTF-8 writes in two
// bytes (U+0080 to U+009F). What a peer has sent can neither begin a line of its own in a log nor move its reader's
// cursor.
[[nodiscard]] std::string printable(std::string_view text);
