// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ask.h"
#include "timing.h"

#include <string.h>

#include <sys/socket.h>
#include <sys/time.h>

// An unknown command, which is always answered to its sender.
static const uint8_t closing[headerSize] = {0x81, 0xC3, 0x9A, 0xFF, 1, 0, 5, 4, 0x42};

// Replies may be broadcasts, so the socket must not be connected, and must not hear them on a second device as well. A
// lost datagram ends the measurement.
void openDatagrams(struct side* side)
{
    const struct timeval patience = {.tv_sec = 10};
    side->socket = socket(AF_INET, SOCK_DGRAM, 0);
    setsockopt(side->socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const int one = 1;
    setsockopt(side->socket, SOL_SOCKET, SO_BROADCAST, &one, sizeof one);
    const struct sockaddr_in any = {.sin_family = AF_INET};
    if (bind(side->socket, (const struct sockaddr*)&any, sizeof any) != 0) {
        fail("bind");
    }
    if (side->device != NULL) {
        setsockopt(side->socket, SOL_SOCKET, SO_BINDTODEVICE, side->device, (socklen_t)strlen(side->device) + 1);
    }
}

static void sendDatagram(struct side* side, const uint8_t* bytes, int size)
{
    if (sendto(side->socket, bytes, (size_t)size, 0, (struct sockaddr*)&side->address, sizeof side->address) != size) {
        fail("sendto");
    }
}

static void receiveAnswer(struct side* side)
{
    uint8_t answer[4096];
    if (recv(side->socket, answer, sizeof answer, 0) < headerSize) {
        fail("recv");
    }
}

void askDatagram(struct side* side)
{
    sendDatagram(side, job.request, job.requestSize);
    receiveAnswer(side);
}

// Nothing tells that a datagram was dropped but the answer to another one behind it.
void askAfterBurst(struct side* side)
{
    for (int i = 0; i < job.size; ++i) {
        sendDatagram(side, job.request, job.requestSize);
    }
    sendDatagram(side, closing, sizeof closing);
    receiveAnswer(side);
}
