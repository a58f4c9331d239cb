// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timing.h"

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

int64_t nanoseconds(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (int64_t)now.tv_sec * 1000000000 + now.tv_nsec;
}

void report(int side, int64_t since)
{
    printf("%d %lld\n", side, (long long)(nanoseconds() - since));
}

void fail(const char* call)
{
    perror(call);
    exit(1);
}
