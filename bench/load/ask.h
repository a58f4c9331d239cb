// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

// The jobs of bench_ask. Each times one piece of work for a side and reports it.

#include <stdint.h>

#include <netinet/in.h>

enum { headerSize = 20, largestRequest = 1024 };

struct side {
    struct sockaddr_in address;
    const char* device; // from which replies are taken, if told
    int socket;
};

struct job {
    const char* name;
    void (*prepare)(struct side* side);
    void (*work)(struct side* side);
    int size; // of what is uploaded; of the burst of datagrams
    uint8_t request[largestRequest];
    int requestSize;
};

extern struct job job;

void connectTo(struct side* side);
void askConnected(struct side* side);
void askFresh(struct side* side);
void upload(struct side* side);

void openDatagrams(struct side* side);
void askDatagram(struct side* side);
void askAfterBurst(struct side* side);
