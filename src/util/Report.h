// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <string_view>

// The words for the process's own streams, spoken by LibUtils and Uci. Each call is one line, flushed at once,
// so that it stands before the output of the shell command that follows.

// Progress, on standard output.
void reportProgress(std::string_view line);

// A failure, on standard error.
void reportFailure(std::string_view line);

// A failure, on standard error: `text` directly followed by the text of errno as it was at the call.
void reportErrno(std::string_view text);
