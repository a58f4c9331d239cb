// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// Standard output and standard error. Nothing here throws: a reader that goes away (`| head -1`) must not stop work
// that a card is in the middle of. Whether the data went out is asked once, at the end.

void writeData(std::string_view text);    // standard output
void writeMessage(std::string_view text); // standard error

enum class Delivery { complete, readerGone, failed };

// Empties the buffer of standard output, and tells what became of all that was written; if it failed, errno says why.
[[nodiscard]] Delivery finishData();
