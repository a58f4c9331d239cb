// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "log_socket.h"

#include <stdio.h>

#include <sys/socket.h>

// Usage: bench_sink
//
// Reads the card's log as fast as it comes and forgets it, so that no server ever waits for its log. Says "ready".
int main(void)
{
    char line[2048];
    const int log = takeLog();
    puts("ready");
    fflush(stdout);
    while (recv(log, line, sizeof line, 0) >= 0) {
    }
    return 1;
}
