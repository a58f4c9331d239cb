// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <fcntl.h>
#include <unistd.h>

// What the next file would get: the same as before if no descriptor was left open.
[[nodiscard]] inline int lowestFreeDescriptor()
{
    const int lowest = ::fcntl(STDERR_FILENO, F_DUPFD, 0);
    ::close(lowest);
    return lowest;
}
