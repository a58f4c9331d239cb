// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// Loaded into the daemon and its children by the card's supervisor: what they print comes line by line, though not to a
// terminal.

#include <cstdio>

namespace
{

[[gnu::constructor]] void bufferLines()
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
}

} // namespace
