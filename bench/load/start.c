// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "log_socket.h"
#include "timing.h"

#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <string.h>

#include <sys/socket.h>
#include <sys/wait.h>

extern char** environ;

static void waitForLine(int log, const char* text)
{
    char line[2049];
    do {
        const ssize_t size = recv(log, line, sizeof line - 1, 0);
        line[size > 0 ? size : 0] = '\0';
    } while (strstr(line, text) == NULL);
}

static void drain(int log)
{
    char line[2048];
    while (recv(log, line, sizeof line, MSG_DONTWAIT) >= 0) {
    }
}

// Usage: bench_start ROUNDS PROGRAM...
//
// Starts each program in turn and prints how long it takes until the last socket listens, as its log tells; then ends
// it.
int main(int count, char** arguments)
{
    const int log = takeLog();
    for (int round = count > 1 ? atoi(arguments[1]) : 0; round > 0; --round) {
        for (int i = 2; i < count; ++i) {
            char* const command[] = {arguments[i], NULL};
            pid_t child;
            const int64_t start = nanoseconds();
            if (posix_spawn(&child, arguments[i], NULL, NULL, command, environ) != 0) {
                fail(arguments[i]);
            }
            waitForLine(log, "BindToDevice (eth1) was successful");
            report(i - 2, start);
            kill(child, SIGKILL);
            waitpid(child, NULL, 0);
            drain(log);
        }
    }
    return 0;
}
