// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string>
#include <string_view>

// The whole of a file, or of standard input for "-". Throws a badFile Failure.
[[nodiscard]] std::string readLocalFile(const std::string& path);

// Gives a file, which need not exist, another text. Who reads it meanwhile finds the former text or this one, never a
// part; everybody may read it. Throws a badFile Failure, and then all is as before.
void replaceLocalFile(const std::string& path, std::string_view text);
