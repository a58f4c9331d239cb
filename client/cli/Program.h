// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// The whole program: reads the command line, runs the command, reports what went wrong; returns the exit status.
[[nodiscard]] int runProgram(int argc, const char* const* argv);
