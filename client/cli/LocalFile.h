// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>

// The whole of a file, or of standard input for "-". Throws a badFile Failure.
[[nodiscard]] std::string readLocalFile(const std::string& path);
