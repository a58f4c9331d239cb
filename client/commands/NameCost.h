// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstddef>

class Console;

// Every card that hears a name asked for logs a line. People are told before they ask for more than 64.
void noteCostOfNames(const Console& console, std::size_t names);
// The same before a change, which asks for all names, wherever the user wrote them down, and waits for all of them.
void noteCostOfChange(const Console& console, std::size_t names);
