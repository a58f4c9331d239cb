// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// What the programs of this folder share: the clock, and one line of output for each measurement.

#include <stdint.h>

int64_t nanoseconds(void);

// Prints which side it was and how long it took.
void report(int side, int64_t since);

// Ends the program with the failed call and its reason.
_Noreturn void fail(const char* call);
