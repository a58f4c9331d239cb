// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ask.h"

#include "timing.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <arpa/inet.h>

enum { mostSides = 4 };

static const struct job jobs[] = {
    {.name = "kept", .prepare = connectTo, .work = askConnected},
    {.name = "fresh", .work = askFresh},
    {.name = "upload", .work = upload},
    {.name = "datagram", .prepare = openDatagrams, .work = askDatagram},
    {.name = "burst", .prepare = openDatagrams, .work = askAfterBurst},
};

struct job job;

static void choose(const char* name, int size, const char* request)
{
    for (size_t i = 0; i < sizeof jobs / sizeof *jobs; ++i) {
        if (strcmp(jobs[i].name, name) == 0) {
            job = jobs[i];
        }
    }
    job.size = size;
    for (; job.requestSize < largestRequest && sscanf(request, "%2hhx", &job.request[job.requestSize]) == 1;
         request += 2) {
        ++job.requestSize;
    }
}

static struct side sideOf(char* text)
{
    const char* address = strtok(text, ":");
    const char* port = strtok(NULL, "%");
    struct side side = {.device = strtok(NULL, "")};
    side.address.sin_family = AF_INET;
    side.address.sin_port = htons((uint16_t)atoi(port));
    inet_aton(address, &side.address.sin_addr);
    return side;
}

// Usage: bench_ask JOB ROUNDS TURN SIZE REQUEST ADDRESS:PORT[%DEVICE]...
//
// In each round every side in turn gets TURN requests, one after the other. Prints the side's number and nanoseconds of
// each. The request is given in hexadecimal digits.
int main(int count, char** arguments)
{
    if (count < 7 || count > 6 + mostSides) {
        return 2;
    }
    choose(arguments[1], atoi(arguments[4]), arguments[5]);
    if (job.work == NULL) {
        return 2;
    }
    struct side sides[mostSides];
    const int used = count - 6;
    for (int i = 0; i < used; ++i) {
        sides[i] = sideOf(arguments[6 + i]);
        if (job.prepare != NULL) {
            job.prepare(&sides[i]);
        }
    }
    for (int round = atoi(arguments[2]); round > 0; --round) {
        for (int i = 0; i < used; ++i) {
            for (int turn = atoi(arguments[3]); turn > 0; --turn) {
                const int64_t start = nanoseconds();
                job.work(&sides[i]);
                report(i, start);
            }
        }
    }
    return 0;
}
