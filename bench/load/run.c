// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timing.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <string.h>

#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

static void run(char* const* command)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child;
    int status = 0;
    if (posix_spawnp(&child, command[0], &actions, NULL, command, environ) != 0) {
        fail(command[0]);
    }
    waitpid(child, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0) {
        fail(command[0]);
    }
}

// Usage: bench_run ROUNDS COMMAND [ARGUMENT...] [-- COMMAND [ARGUMENT...]]...
//
// Runs each command in turn, without its output, and prints how long it takes. One that fails ends the measurement.
int main(int count, char** arguments)
{
    for (int round = count > 1 ? atoi(arguments[1]) : 0; round > 0; --round) {
        int side = 0;
        for (int first = 2, i = 2; i <= count; ++i) {
            if (i < count && strcmp(arguments[i], "--") != 0) {
                continue;
            }
            char* const end = arguments[i];
            arguments[i] = NULL;
            const int64_t start = nanoseconds();
            run(arguments + first);
            report(side++, start);
            arguments[i] = end;
            first = i + 1;
        }
    }
    return 0;
}
