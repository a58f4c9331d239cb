// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Where a program is installed, as PATH tells; nothing if it is not.
[[nodiscard]] std::optional<std::string> findProgram(std::string_view name);

// Runs a program to its end, with these words and no shell. What it complains of goes to the file `complaints`, the
// rest nowhere. Returns its exit status, or -1 if it could not be run or was killed.
[[nodiscard]] int runToItsEnd(const std::string& program, std::vector<std::string> words,
                              const std::string& complaints);
